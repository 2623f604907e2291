#include "Ambrel/Home/UserFolders.h"

#include "Ambrel/Home/FolderRelation.h"
#include "Ambrel/Home/HomesElsewhere.h"
#include "Ambrel/Platform/FileSystem.h"

#include <algorithm>

namespace ambrel {

namespace {

bool isOrContains(const Path& place, const Path& home) {
    return folders::isOrLiesIn(home, place) || folders::isOrLiesInByText(home, place);
}

bool touches(const Path& place, const Path& home) {
    return folders::isOrLiesInByText(place, home) || folders::isOrLiesInByText(home, place);
}

} // namespace

UserFolders::UserFolders(UserPlaces user, Path instanceHome)
    : user_(std::move(user)), instanceHome_(std::move(instanceHome)),
      settings_(userFolderSettings(user_)) {}

std::optional<Path> UserFolders::find(std::string_view name) {
    const auto setting = settings_.find(name);
    if (setting == settings_.end()) return paths::join(user_.home, name);
    return isShareable(name, setting->second) ? std::optional(setting->second) : std::nullopt;
}

std::vector<Path> UserFolders::allSet(const UserPlaces& user) {
    std::vector<Path> places;
    for (const auto& [name, place] : userFolderSettings(user)) {
        if (!place.empty()) places.push_back(place);
    }
    return places;
}

bool UserFolders::isUsual(std::string_view name, const Path& place) const {
    return place == paths::join(user_.home, name) &&
           fileSystem::kindOf(place) != fileSystem::ItemKind::symbolicLink;
}

bool UserFolders::isShareable(std::string_view name, const Path& place) {
    if (place.empty()) return false;
    if (isOrContains(place, user_.home) || isOrContains(place, instanceHome_)) return false;
    if (isUsual(name, place)) return true;
    const auto real = folders::canonical(place);
    return std::ranges::none_of(homes(), [&](const Path& home) {
        // What is gone holds nothing that could be taken for the user's.
        return (touches(place, home) || touches(real, home)) && !fileSystem::isMissing(home);
    });
}

const std::vector<Path>& UserFolders::homes() {
    if (homes_) return *homes_;
    auto& known = homes_.emplace(homesElsewhere::all(user_));
    const auto usual = paths::join(user_.home, homesElsewhere::usualFolder);
    known.insert(known.end(), {usual, folders::canonical(usual)});
    // One that is or contains the user's own is kept apart from nothing.
    if (folders::isOrLiesIn(user_.home, instanceHome_)) return known;
    known.insert(known.end(), {instanceHome_, folders::canonical(instanceHome_)});
    return known;
}

} // namespace ambrel
