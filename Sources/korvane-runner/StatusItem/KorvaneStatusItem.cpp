#include "korvane-runner/StatusItem/KorvaneStatusItem.h"

#include "Ambrel/Instance/DesktopId.h"

#include <utility>

namespace korvane::runner {

KorvaneStatusItem::KorvaneStatusItem(const ambrel::InstanceConfig& config, StatusIconFiles icons,
                                     StatusArea& area, Action onFocus, Action onQuit)
    : onFocus_(std::move(onFocus)), onQuit_(std::move(onQuit)) {
    const auto& name = config.displayName;
    const auto image = [icons = std::move(icons), isTemplate = config.menuBarIconTemplate] {
        return menuBarImage(icons, isTemplate);
    };
    item_ = area.show(
        {.id = ambrel::desktopId(config.bundleId),
         .toolTip = name,
         .image = image,
         .menu = {{.title = name, .chosen = nullptr},
                  {.title = "", .chosen = nullptr},
                  {.title = "Show " + name, .chosen = [this] { focusAction(); }},
                  {.title = "Quit " + name, .chosen = [this] { quitAction(); }, .key = 'q'}}});
}

KorvaneStatusItem::~KorvaneStatusItem() = default;

void KorvaneStatusItem::focusAction() const { onFocus_(); }

void KorvaneStatusItem::quitAction() const { onQuit_(); }

} // namespace korvane::runner
