#include "Ambrel/Home/SharedUserFolders.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Home/FolderRelation.h"
#include "Ambrel/Home/UserFolders.h"
#include "Ambrel/Platform/FileSystem.h"

#include <algorithm>

namespace ambrel {

namespace {

using fileSystem::ItemKind;

/// Runs one step of linking or migration. A step that fails leaves things as they were, the next
/// one looks for itself, and a start must not fail for want of a link. Returns whether it went
/// well.
template <class Step> bool succeeds(const Step& step) noexcept {
    try {
        step();
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

/// The same, with what went wrong told to whoever wants to know.
template <class Step> bool succeeds(const Step& step, const SharedUserFolders::Obstacle& obstacle) {
    std::string sentence;
    try {
        step();
        return true;
    } catch (const std::exception& error) {
        sentence = error.what();
    }
    if (obstacle) obstacle(sentence);
    return false;
}

/// An unlistable folder counts as empty; it is only ever removed by means that spare its contents.
std::vector<std::string> entriesOf(const Path& folder) {
    std::vector<std::string> entries;
    succeeds([&] { entries = fileSystem::list(folder); });
    return entries;
}

void removeIfPossible(const Path& item) noexcept {
    succeeds([&] { fileSystem::removeItem(item); });
}

Path numbered(const Path& path, int number) {
    const auto folder = paths::deletingLastComponent(path);
    const auto extension = paths::extension(path);
    std::string name(paths::stem(path));
    name.append(" (").append(std::to_string(number)).append(")");
    if (!extension.empty()) name.append(".").append(extension);
    return paths::join(folder, name);
}

/// A path at which nothing exists yet: `path` itself, else with " (1)", " (2)", … before its
/// extension.
Path uniqueDestination(const Path& path) {
    Path candidate = path;
    for (int number = 1; fileSystem::exists(candidate); ++number) {
        candidate = numbered(path, number);
    }
    return candidate;
}

bool moveInto(const Path& source, const Path& destination, const std::string& entry,
              const SharedUserFolders::Obstacle& obstacle) {
    return succeeds(
        [&] {
            fileSystem::move(paths::join(source, entry),
                             uniqueDestination(paths::join(destination, entry)));
        },
        obstacle);
}

/// Empties `source` into `destination` and returns how many entries were moved.
int moveEntries(const Path& source, const Path& destination,
                const SharedUserFolders::Obstacle& obstacle) {
    succeeds([&] { fileSystem::createFolders(destination); }, obstacle);
    int moved = 0;
    for (const auto& entry : entriesOf(source)) {
        if (entry == ".DS_Store") {
            removeIfPossible(paths::join(source, entry));
        } else if (moveInto(source, destination, entry, obstacle)) {
            ++moved;
        }
    }
    // A plain file cannot be listed either: whether a link may replace it is not decided here.
    const bool isFolder = fileSystem::kindOf(source) == ItemKind::folder;
    if (isFolder && entriesOf(source).empty()) removeIfPossible(source);
    return moved;
}

void linkOrLeave(const Path& linkPath, const Path& target) {
    const Path link(paths::withoutTrailingSlashes(linkPath)); // with one, links would be followed
    if (!target.starts_with('/')) return;                     // the link would lead somewhere else
    if (!fileSystem::exists(target) || fileSystem::mayBeSameItem(link, target)) return;
    succeeds([&] { fileSystem::createFolders(Path(paths::deletingLastComponent(link))); });
    if (fileSystem::kindOf(link) == ItemKind::symbolicLink) return;
    if (fileSystem::exists(link)) {
        if (!entriesOf(link).empty()) return;
        removeIfPossible(link);
    }
    succeeds([&] { fileSystem::createSymbolicLink(target, link); });
}

/// Whether files would be found again at `place`: what is missing outside the home may be on a disk
/// that is not there now, which would hide them later.
bool isReachable(const Path& place, const UserPlaces& user) {
    return fileSystem::isFolder(place) || folders::isOrLiesIn(place, user.home);
}

/// A file in the place of a folder goes for the sake of a link to a folder, and for nothing else.
bool mayBeLinked(const Path& source, const Path& destination) {
    const auto kind = fileSystem::kindOf(source);
    return !kind || *kind == ItemKind::folder || fileSystem::isFolder(destination);
}

/// Migrates each shared folder of `home` into the one that `destinationOf` gives for its name, if
/// any.
template <class DestinationOf>
std::map<std::string, int> migrateEach(const Path& home, const DestinationOf& destinationOf,
                                       const SharedUserFolders::Obstacle& obstacle = {}) {
    std::map<std::string, int> counts;
    if (home.empty()) return counts;
    for (const auto name : SharedUserFolders::names) {
        const auto source = paths::join(home, name);
        const std::optional<Path> destination = destinationOf(name);
        if (!destination || fileSystem::kindOf(source) == ItemKind::symbolicLink) continue;
        if (fileSystem::mayBeSameItem(source, *destination)) continue; // the user's own home
        if (fileSystem::exists(source)) {
            counts[std::string(name)] = moveEntries(source, *destination, obstacle);
        }
        if (mayBeLinked(source, *destination)) {
            SharedUserFolders::linkIfSafe(source, *destination);
        }
    }
    return counts;
}

} // namespace

void SharedUserFolders::linkIfSafe(const Path& link, const Path& target) noexcept {
    succeeds([&] { linkOrLeave(link, target); });
}

void SharedUserFolders::ensure(const Path& home, const UserPlaces& user) noexcept {
    if (home.empty()) return; // the links would land wherever the program was started
    succeeds([&] {
        UserFolders own(user, home);
        for (const auto name : names) {
            if (const auto folder = own.find(name)) linkIfSafe(paths::join(home, name), *folder);
        }
    });
}

bool SharedUserFolders::needsMigration(const Path& home, const UserPlaces& user) noexcept {
    if (home.empty()) return false;
    bool isNeeded = false;
    succeeds([&] {
        UserFolders own(user, home);
        isNeeded = std::ranges::any_of(names, [&](std::string_view name) {
            const auto kind = fileSystem::kindOf(paths::join(home, name));
            return kind && *kind != ItemKind::symbolicLink && own.find(name).has_value();
        });
    });
    return isNeeded;
}

std::map<std::string, int> SharedUserFolders::migrate(const Path& home, const UserPlaces& user,
                                                      const Obstacle& obstacle) {
    UserFolders own(user, home);
    const auto destinationOf = [&](std::string_view name) -> std::optional<Path> {
        auto place = own.find(name);
        if (!place || isReachable(*place, user)) return place;
        const bool isNeeded = fileSystem::exists(paths::join(home, name));
        if (obstacle && isNeeded) obstacle(utf8::oneLine(*place) + " is not there.");
        return std::nullopt;
    };
    return migrateEach(home, destinationOf, obstacle);
}

std::map<std::string, int> SharedUserFolders::migrate(const Path& home, const Path& into) {
    return migrateEach(
        home, [&](std::string_view name) { return std::optional(paths::join(into, name)); });
}

} // namespace ambrel
