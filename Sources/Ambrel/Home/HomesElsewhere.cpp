#include "Ambrel/Home/HomesElsewhere.h"

#include "Ambrel/Home/FolderRelation.h"
#include "Ambrel/Home/NewFolders.h"
#include "Ambrel/Instance/BundleScan.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/GuardedFolder.h"

#include <algorithm>
#include <cerrno>
#include <optional>

namespace ambrel::homesElsewhere {

namespace {

constexpr const char* listName = "homes";
constexpr unsigned ownerFile = 0600;

Path folderOf(const UserPlaces& user) { return paths::join(user.data, "korvane"); }
Path fileOf(const UserPlaces& user) { return paths::join(folderOf(user), listName); }

/// The list, absent when there is none. Each entry ends in a NUL byte, which is in no path; the
/// first one is empty, so that a file that was cut to nothing is not taken for a list.
std::optional<std::string> readList(const UserPlaces& user) {
    if (user.data.empty()) return std::nullopt;
    try {
        auto list = fileSystem::read(fileOf(user));
        return list.empty() ? std::nullopt : std::optional(std::move(list));
    } catch (const FileError&) {
        return std::nullopt;
    }
}

bool isEmptyFile(const Path& file) {
    return fileSystem::kindOf(file) == fileSystem::ItemKind::file && fileSystem::read(file).empty();
}

/// What programs find missing of the data folder is closed to others (XDG Base Directory
/// Specification).
void makePrivateFolders(NewFolders& folders, const Path& folder) {
    if (fileSystem::isFolder(folder)) return;
    const Path above{paths::deletingLastComponent(folder)};
    if (!above.empty() && above != folder) makePrivateFolders(folders, above);
    folders.makePrivate(folder);
}

/// Without the list every start looks for itself, which is slower and no less right. One that
/// another process has made meanwhile stays. Returns false where it can be made at no time.
bool tryMakeList(const std::string& list, const UserPlaces& user) noexcept {
    // An account without a home does not get one from here.
    if (user.data.empty() || !fileSystem::isFolder(user.home)) return false;
    try {
        NewFolders folders;
        makePrivateFolders(folders, folderOf(user));
        const bool isMade = GuardedFolder::open(folderOf(user)).putFile(listName, list, ownerFile);
        if (!isMade && isEmptyFile(fileOf(user))) {
            fileSystem::replace(fileOf(user), list, ownerFile);
        }
        folders.keep();
        return true;
    } catch (const FileError& error) {
        // What others make and take back is there at one moment and gone at the next.
        return error.code == EEXIST || error.code == ENOENT;
    } catch (const std::exception&) {
        return false;
    }
}

bool isListed(const std::string& list, const Path& home) {
    return list.find('\0' + home + '\0') != std::string::npos;
}

void append(std::string& list, const Path& home) {
    if (!isListed(list, home)) list += home + '\0';
}

/// A link in the usual folder leads elsewhere too.
bool isElsewhere(const Path& home, const UserPlaces& user) {
    if (!home.starts_with('/')) return false;
    const auto usual = paths::join(user.home, usualFolder);
    return paths::deletingLastComponent(home) != usual ||
           fileSystem::kindOf(home) == fileSystem::ItemKind::symbolicLink;
}

/// Adds the home by its name and by where that leads. The user's own home is no instance's alone:
/// everything that is shared lies in it.
void appendHome(std::string& list, const Path& home, const UserPlaces& user) {
    if (folders::isOrLiesIn(user.home, home)) return;
    append(list, home);
    append(list, folders::canonical(home));
}

std::string listByLooking(const UserPlaces& user) {
    std::string list(1, '\0');
    for (const auto& bundle : bundlesIn(defaultInstanceFolders(user))) {
        const auto config = configIn(bundle);
        if (!config) continue;
        const Path home{paths::withoutTrailingSlashes(config->resolvedHome(user))};
        if (isElsewhere(home, user)) appendHome(list, home, user);
    }
    return list;
}

/// The list, made where it is missing; absent where it cannot be. Others who make it at the same
/// time, or take back the folders of it that they have made, are no reason to go without.
std::optional<std::string> madeList(const UserPlaces& user) {
    constexpr int attempts = 20;
    auto list = readList(user);
    if (list) return list;
    const auto looked = listByLooking(user);
    bool isPossible = true;
    for (int attempt = 0; attempt < attempts && isPossible && !list; ++attempt) {
        isPossible = tryMakeList(looked, user);
        list = readList(user);
    }
    return list;
}

} // namespace

void add(const Path& given, const UserPlaces& user) noexcept {
    try {
        const Path home{paths::withoutTrailingSlashes(given)};
        if (!isElsewhere(home, user)) return;
        auto list = madeList(user);
        if (!list) return;
        const auto known = list->size();
        appendHome(*list, home, user);
        if (list->size() > known) fileSystem::append(fileOf(user), list->substr(known));
    } catch (const std::exception&) {
        // What cannot be told now is told at the next start.
    }
}

void forget(const Path& given, const UserPlaces& user) noexcept {
    try {
        const auto list = readList(user);
        if (!list) return;
        auto shorter = *list;
        const Path home{paths::withoutTrailingSlashes(given)};
        for (const auto& path : {home, folders::canonical(home)}) {
            const auto at = shorter.find('\0' + path + '\0');
            if (at != std::string::npos) shorter.erase(at, path.size() + 1);
        }
        if (shorter != *list) fileSystem::replace(fileOf(user), shorter, ownerFile);
    } catch (const std::exception&) {
        // Then the place is not shared, as it was before.
    }
}

std::vector<Path> all(const UserPlaces& user) {
    auto list = readList(user);
    if (!list) {
        list = listByLooking(user);
        tryMakeList(*list, user);
    }
    std::vector<Path> homes;
    for (std::string_view rest = *list; !rest.empty();) {
        const auto home = rest.substr(0, rest.find('\0'));
        rest.remove_prefix(std::min(home.size() + 1, rest.size()));
        if (home.starts_with('/')) homes.emplace_back(home);
    }
    return homes;
}

} // namespace ambrel::homesElsewhere
