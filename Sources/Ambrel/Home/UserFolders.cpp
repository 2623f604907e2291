#include "Ambrel/Home/UserFolders.h"

#include "Ambrel/Home/FolderRelation.h"
#include "Ambrel/Instance/BundleScan.h"
#include "Ambrel/Platform/FileSystem.h"

#include <algorithm>

namespace ambrel {

namespace {

bool isOrContains(const Path& place, const Path& home) {
    return folders::isOrLiesIn(home, place) || folders::isOrLiesInByText(home, place);
}

} // namespace

UserFolders::UserFolders(UserPlaces user, Path instanceHome)
    : user_(std::move(user)), instanceHome_(std::move(instanceHome)),
      settings_(userFolderSettings(user_)) {}

std::optional<Path> UserFolders::find(std::string_view name) {
    const auto setting = settings_.find(name);
    if (setting == settings_.end()) return paths::join(user_.home, name);
    return isShareable(setting->second) ? std::optional(setting->second) : std::nullopt;
}

std::vector<Path> UserFolders::allSet(const UserPlaces& user) {
    std::vector<Path> places;
    for (const auto& [name, place] : userFolderSettings(user)) {
        if (!place.empty()) places.push_back(place);
    }
    return places;
}

bool UserFolders::isShareable(const Path& place) {
    if (place.empty()) return false;
    if (isOrContains(place, user_.home) || isOrContains(place, instanceHome_)) return false;
    const auto& known = otherHomes();
    const auto real = folders::canonical(place);
    const auto isHome = [&](const Path& home) {
        return home == real || home == place || fileSystem::isSameItem(home, place);
    };
    const auto contains = [&](const Path& parent) { return isOrContains(place, parent); };
    return std::ranges::none_of(known.homes, isHome) &&
           std::ranges::none_of(known.parents, contains);
}

const UserFolders::OtherHomes& UserFolders::otherHomes() {
    if (otherHomes_) return *otherHomes_;
    auto& known = otherHomes_.emplace();
    const auto add = [&](const Path& home) {
        known.homes.insert(home);
        known.parents.insert(Path(paths::deletingLastComponent(home)));
    };
    // Not from the registry, which sorts by name: the runner starts without the library for that.
    for (const auto& bundle : bundlesIn(defaultInstanceFolders(user_))) {
        const auto config = configIn(bundle);
        const Path home(
            paths::withoutTrailingSlashes(config ? config->resolvedHome(user_) : Path()));
        if (!home.starts_with('/')) continue;
        add(home);
        add(folders::canonical(home));
    }
    return known;
}

} // namespace ambrel
