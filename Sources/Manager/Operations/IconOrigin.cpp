#include "Manager/Operations/IconOrigin.h"

#include "Ambrel/Application/DeclaredIcon.h"
#include "Ambrel/Icon/IconComposer.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/LibraryError.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Base/Refusal.h"
#include "Manager/Files/IconConversion.h"

namespace korvane {

using ambrel::IconComposer;
using ambrel::IconLabel;
using ambrel::InstanceRecord;
using ambrel::Path;
namespace fileSystem = ambrel::fileSystem;

namespace {

/// Whether `icon` is what is drawn when `label` is put on the picture `plain`. Drawing gives the
/// same bytes each time.
bool isDrawnOf(const std::string& icon, const Path& plain, const IconLabel& label,
               const Path& scratch) {
    const auto drawn = ambrel::paths::join(scratch, "compared.icns");
    try {
        IconComposer::compose(plain, label, drawn);
    } catch (const IconComposer::ComposeError&) {
        return false;
    } catch (const ambrel::LibraryError&) {
        return false;
    }
    const bool isSame = fileSystem::read(drawn) == icon;
    fileSystem::removeItem(drawn);
    return isSame;
}

} // namespace

std::optional<IconLabel> visibleLabel(std::optional<IconLabel> label) {
    if (label && !label->isVisible()) label.reset();
    return label;
}

std::optional<Notice> labelObstacle(const InstanceRecord& made) {
    const auto label = visibleLabel(made.config.iconLabel);
    if (!label) return std::nullopt;
    if (!made.iconURL()) {
        return Notice{.kind = Notice::Kind::labelWithoutIcon,
                      .subject = {},
                      .sentence = "There is no icon to draw the label on.",
                      .remedy = Remedy::chooseIcon};
    }
    const auto obstacle = obstacleTo(*label);
    if (!obstacle) return std::nullopt;
    return Notice{
        .kind = Notice::Kind::labelNotDrawn, .subject = label->text, .sentence = *obstacle};
}

IconSource iconSourceOf(const InstanceRecord& record, const std::optional<IconLabel>& wanted,
                        const Path& scratch) {
    const auto file = record.iconURL();
    if (!file) return {};
    const auto icon = fileSystem::read(*file);
    const auto label = visibleLabel(record.config.iconLabel);
    const auto own = record.config.kind == ambrel::ShortcutKind::app
                         ? ambrel::declaredIcon(record.config.targetAppURL())
                         : std::nullopt;
    if (own &&
        (fileSystem::read(*own) == icon || (label && isDrawnOf(icon, *own, *label, scratch))))
        return {};
    if (!label) return {.picture = file};
    if (label == visibleLabel(wanted)) return {.picture = file, .isDrawn = true};
    throw Refusal(Refusal::Kind::unusableIcon, *file,
                  "Its icon has the label " + inQuotes(label->text) +
                      " drawn on it, and the picture without it is not kept.",
                  Remedy::chooseIcon);
}

} // namespace korvane
