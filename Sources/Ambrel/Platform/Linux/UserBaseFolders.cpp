#include "Ambrel/Platform/Posix/UserBaseFolders.h"

#include <cstdlib>
#include <string_view>

namespace ambrel {

namespace {

/// The specification has relative paths ignored (XDG Base Directory Specification).
void choose(Path& folder, const char* variable) {
    const char* value = std::getenv(variable);
    const auto chosen = value == nullptr ? std::string_view() : std::string_view(value);
    if (chosen.starts_with('/')) folder = Path(paths::withoutTrailingSlashes(chosen));
}

} // namespace

UserPlaces UserPlaces::usual(const Path& home) {
    if (home.empty()) return {};
    const Path place{paths::withoutTrailingSlashes(home)};
    return {.home = place,
            .config = paths::join(place, ".config"),
            .data = paths::join(place, ".local/share")};
}

UserPlaces withChosenBaseFolders(UserPlaces usual) {
    choose(usual.config, "XDG_CONFIG_HOME");
    choose(usual.data, "XDG_DATA_HOME");
    return usual;
}

} // namespace ambrel
