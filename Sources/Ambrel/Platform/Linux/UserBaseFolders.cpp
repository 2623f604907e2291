#include "Ambrel/Platform/UserPaths.h"

#include <cstdlib>
#include <string_view>

namespace ambrel {

namespace {

std::string_view variable(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? std::string_view() : std::string_view(value);
}

Path baseFolder(const char* name, std::string_view standard) {
    const auto chosen = variable(name);
    const bool isOurs = variable("CFFIXED_USER_HOME").empty();
    if (isOurs && chosen.starts_with('/')) return Path(paths::withoutTrailingSlashes(chosen));
    const auto home = userHome();
    return home.empty() ? Path() : paths::join(home, standard);
}

} // namespace

Path userConfigFolder() { return baseFolder("XDG_CONFIG_HOME", ".config"); }

Path userDataFolder() { return baseFolder("XDG_DATA_HOME", ".local/share"); }

} // namespace ambrel
