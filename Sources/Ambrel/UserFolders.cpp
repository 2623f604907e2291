#include "Ambrel/UserFolders.h"

#include "Ambrel/Platform/UserPaths.h"
#include "Ambrel/Support/BundleScan.h"
#include "Ambrel/Support/FolderRelation.h"

#include <algorithm>

namespace ambrel {

namespace {

bool isOrContains(const Path& place, const Path& home) {
    return folders::isOrLiesIn(home, place) || folders::isOrLiesInByText(home, place);
}

} // namespace

UserFolders::UserFolders(Path instanceHome)
    : instanceHome_(std::move(instanceHome)), settings_(userFolderSettings()) {}

std::optional<Path> UserFolders::find(std::string_view name) {
    const auto setting = settings_.find(name);
    if (setting == settings_.end()) return paths::join(userHome(), name);
    return isShareable(setting->second) ? std::optional(setting->second) : std::nullopt;
}

std::vector<Path> UserFolders::allSet() {
    std::vector<Path> places;
    for (const auto& [name, place] : userFolderSettings()) {
        if (!place.empty()) places.push_back(place);
    }
    return places;
}

bool UserFolders::isShareable(const Path& place) {
    if (place.empty()) return false;
    if (isOrContains(place, userHome()) || isOrContains(place, instanceHome_)) return false;
    return std::ranges::none_of(knownHomes(),
                                [&](const Path& home) { return isOrContains(place, home); });
}

const std::vector<Path>& UserFolders::knownHomes() {
    if (knownHomes_) return *knownHomes_;
    auto& homes = knownHomes_.emplace();
    // Not from the registry, which sorts by name: the runner starts without the library for that.
    for (const auto& bundle : bundlesIn(defaultInstanceFolders())) {
        const auto config = configIn(bundle);
        auto home = config ? config->resolvedHome() : Path();
        if (home.starts_with('/')) homes.push_back(std::move(home));
    }
    return homes;
}

} // namespace ambrel
