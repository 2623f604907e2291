#include "korvane-runner/Desktop/Linux/LauncherBadge.h"

#include "korvane-runner/Desktop/Linux/GVariants.h"

#include <algorithm>

namespace korvane::runner {

/// The bus may tell of a dock when the badge has gone; it holds this weakly.
struct LauncherBadge::State {
    std::string entry;
    SessionBus& bus;
    std::int64_t count = 0;

    void send() const {
        constexpr SessionBus::Member update{"/com/canonical/unity/launcherentry/1",
                                            "com.canonical.Unity.LauncherEntry", "Update"};
        GVariantBuilder properties;
        g_variant_builder_init(&properties, G_VARIANT_TYPE("a{sv}"));
        g_variant_builder_add(&properties, "{sv}", "count", g_variant_new_int64(count));
        g_variant_builder_add(&properties, "{sv}", "count-visible",
                              g_variant_new_boolean(count > 0));
        bus.emit(update, g_variant_new("(@sa{sv})", textVariant(entry), &properties));
    }
};

LauncherBadge::LauncherBadge(const std::string& desktopId, SessionBus& bus)
    : state_(new State{"application://" + desktopId + ".desktop", bus}) {
    // Docks go by this name, and keep no number that was sent before they came.
    bus.whenOwnerChanges("com.canonical.Unity", [weak = std::weak_ptr(state_)] {
        const auto state = weak.lock();
        if (state && state->count > 0) state->send();
    });
}

void LauncherBadge::show(std::int64_t count) {
    state_->count = std::max(count, std::int64_t{0});
    state_->send();
}

} // namespace korvane::runner
