#include "korvane-runner/Desktop/Linux/StatusNotifierItem.h"

#include "Ambrel/Platform/Processes.h"
#include "korvane-runner/Desktop/Linux/BusInterfaces.h"
#include "korvane-runner/Desktop/Linux/BusObject.h"
#include "korvane-runner/Desktop/Linux/DBusMenu.h"
#include "korvane-runner/Desktop/Linux/StatusNotifierIcon.h"
#include "korvane-runner/Desktop/Linux/StatusPixels.h"

#include <optional>
#include <string_view>
#include <utility>

namespace korvane::runner {

namespace {

constexpr const char* path = "/StatusNotifierItem";

constexpr const char* busName = "org.freedesktop.DBus";

constexpr SessionBus::Member ofBus(const char* name) {
    return {"/org/freedesktop/DBus", "org.freedesktop.DBus", name};
}

constexpr const char* watcher = "org.kde.StatusNotifierWatcher";

} // namespace

/// The bus may answer when the item has gone; what it calls holds this weakly.
struct StatusNotifierItem::State {
    std::string id;
    std::string toolTip;
    std::function<StatusImage()> image;
    SessionBus& bus;
    DBusMenu menu;
    /// Of its own, so that the item can go while the connection stays.
    std::string name =
        "org.kde.StatusNotifierItem-" + std::to_string(ambrel::ownProcessId()) + "-1";
    std::optional<StatusNotifierIcon> icon{}; ///< once somebody has asked for it
    std::optional<BusObject> object{};

    const StatusNotifierIcon& knownIcon() {
        if (!icon) icon.emplace(id, std::exchange(image, nullptr)());
        return *icon;
    }

    /// The tool tip as a title, which is plain text; what stands below it would be markup.
    GVariant* toolTipVariant() const {
        return g_variant_new("(s@a(iiay)@ss)", "", pixmapsVariant({}), textVariant(toolTip), "");
    }

    GVariant* property(std::string_view asked) {
        if (asked == "Category") return g_variant_new_string("ApplicationStatus");
        if (asked == "Id") return textVariant(id);
        if (asked == "Title") return textVariant(toolTip);
        if (asked == "Status") return g_variant_new_string("Active");
        if (asked == "WindowId") return g_variant_new_int32(0);
        if (asked == "IconName") return textVariant(knownIcon().name());
        if (asked == "IconThemePath") return textVariant(knownIcon().themeFolder());
        if (asked == "IconPixmap") return g_variant_ref(knownIcon().pixmaps());
        if (asked == "ToolTip") return toolTipVariant();
        if (asked == "ItemIsMenu") return g_variant_new_boolean(TRUE);
        return g_variant_new_object_path(DBusMenu::path);
    }

    /// Panels that show the menu themselves call none of the methods. To one that does not, the
    /// first entry is better than nothing.
    GVariant* answer(std::string_view method) {
        if (method == "Activate") menu.chooseFirst();
        return g_variant_new("()");
    }

    /// `answer` is that to the request for the name.
    static void announce(const std::shared_ptr<State>& state, GVariant* answer) {
        constexpr guint isOwner = 1;
        guint outcome = 0;
        if (answer != nullptr) g_variant_get(answer, "(u)", &outcome);
        if (outcome != isOwner) state->name.clear();
        state->bus.whenOwned(watcher, [weak = std::weak_ptr(state)](const char* owner) {
            if (const auto there = weak.lock()) there->registerAt(owner);
        });
    }

    /// Without a name, which a program whose processes are counted apart may have taken, the object
    /// is that of this connection. To the one `owner`, because a name would start a program.
    /// flush() waits for the answer: a panel that hears of an item that has gone by then may show
    /// it for as long as it runs.
    void registerAt(const char* owner) const {
        constexpr SessionBus::Member method{"/StatusNotifierWatcher", watcher,
                                            "RegisterStatusNotifierItem"};
        bus.call(owner, method, g_variant_new("(s)", name.empty() ? path : name.c_str()), "()",
                 [](GVariant*) {});
    }
};

StatusNotifierItem::StatusNotifierItem(StatusItemSetup setup, SessionBus& bus, AppLoop& loop)
    : state_(new State{std::move(setup.id), std::move(setup.toolTip), std::move(setup.image), bus,
                       DBusMenu(std::move(setup.menu), bus, loop)}) {
    auto* const state = state_.get();
    state->object.emplace(
        bus, BusObject::Setup{
                 path, statusNotifierItemInterface,
                 [state](std::string_view method, GVariant*) { return state->answer(method); },
                 [state](std::string_view name) { return state->property(name); }});
    constexpr guint doNotQueue = 4;
    bus.call(busName, ofBus("RequestName"), g_variant_new("(su)", state->name.c_str(), doNotQueue),
             "(u)", [weak = std::weak_ptr(state_)](GVariant* answer) {
                 if (const auto there = weak.lock()) State::announce(there, answer);
             });
}

StatusNotifierItem::~StatusNotifierItem() {
    if (state_->name.empty()) return;
    state_->bus.call(busName, ofBus("ReleaseName"), g_variant_new("(s)", state_->name.c_str()),
                     "(u)", nullptr);
}

} // namespace korvane::runner
