#include "korvane-runner/Desktop/Linux/LauncherBadge.h"

#include "korvane-runner/Desktop/Linux/GVariants.h"

#include <algorithm>

namespace korvane::runner {

LauncherBadge::LauncherBadge(const std::string& desktopId, SessionBus& bus)
    : entry_("application://" + desktopId + ".desktop"), bus_(bus) {}

void LauncherBadge::show(std::int64_t count) {
    constexpr SessionBus::Member update{"/com/canonical/unity/launcherentry/1",
                                        "com.canonical.Unity.LauncherEntry", "Update"};
    const auto shown = std::max(count, std::int64_t{0});
    GVariantBuilder properties;
    g_variant_builder_init(&properties, G_VARIANT_TYPE("a{sv}"));
    g_variant_builder_add(&properties, "{sv}", "count", g_variant_new_int64(shown));
    g_variant_builder_add(&properties, "{sv}", "count-visible", g_variant_new_boolean(shown > 0));
    bus_.emit(update, g_variant_new("(@sa{sv})", textVariant(entry_), &properties));
}

} // namespace korvane::runner
