#include "Ambrel/Platform/HomeVariables.h"

#include "Ambrel/Platform/FileSystem.h"

#include <array>
#include <utility>

namespace ambrel {

namespace {

// An inherited value leads a program straight back to the user's own data, and libraries that ask
// the user database instead of HOME heed these alone. So they are set, not dropped.
constexpr std::array<std::pair<const char*, const char*>, 4> baseDirectories{{
    {"XDG_CONFIG_HOME", ".config"},
    {"XDG_DATA_HOME", ".local/share"},
    {"XDG_STATE_HOME", ".local/state"},
    {"XDG_CACHE_HOME", ".cache"},
}};

/// Some programs write into a cache folder but do not make it. Without it they only run slower.
void makeCacheFolder(const Path& home) {
    try {
        fileSystem::createFolders(paths::join(home, ".cache"));
    } catch (const FileError&) {
    }
}

} // namespace

std::vector<std::string> homeVariableNames() {
    std::vector<std::string> names{"HOME", "CFFIXED_USER_HOME"};
    for (const auto& [name, folder] : baseDirectories) names.emplace_back(name);
    return names;
}

void redirectHomeVariables(Environment& environment, const Path& home,
                           const UserPlaces& user) noexcept {
    for (const auto& [name, folder] : baseDirectories)
        environment[name] = paths::join(home, folder);
    makeCacheFolder(home);
    if (environment.contains("XAUTHORITY")) return;
    const auto authority = paths::join(user.home, ".Xauthority");
    if (fileSystem::exists(authority)) environment["XAUTHORITY"] = authority;
}

} // namespace ambrel
