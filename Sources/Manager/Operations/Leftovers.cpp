#include "Manager/Operations/Leftovers.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Home/FolderRelation.h"
#include "Ambrel/Home/HomesElsewhere.h"
#include "Ambrel/Instance/BundleScan.h"
#include "Ambrel/Launch/InstanceLauncher.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Base/Refusal.h"
#include "Manager/Desktop/KnownInstances.h"
#include "Manager/Rules/DataSafety.h"
#include "Manager/Rules/Running.h"
#include "Manager/Rules/UserText.h"

#include <algorithm>
#include <filesystem>
#include <set>

namespace korvane {

using ambrel::InstanceRecord;
using ambrel::InstanceRegistry;
using ambrel::Path;
using ambrel::UserPlaces;
namespace fileSystem = ambrel::fileSystem;
namespace folders = ambrel::folders;
namespace paths = ambrel::paths;
using Kind = Refusal::Kind;

namespace {

Path usualFolder(const UserPlaces& user) {
    return paths::join(user.home, ambrel::homesElsewhere::usualFolder);
}

bool isRealFolder(const Path& path) {
    return fileSystem::kindOf(path) == fileSystem::ItemKind::folder;
}

/// Throws FileError for a folder that is there, or may be, and cannot be listed.
void requireListable(const Path& folder) {
    if (fileSystem::isMissing(folder) && !fileSystem::kindOf(folder)) return;
    fileSystem::list(folder);
}

/// What homes may belong to.
struct Owners {
    std::vector<InstanceRecord> instances;
    std::set<std::string> unreadable;         ///< names of bundles that do not tell their home
    std::vector<std::pair<Path, Path>> named; ///< such bundles, and the homes that entries name
    Running running;
};

/// A bundle on a disk that is not there now, or one that is damaged, may still have its home. An
/// application has none. Throws FileError where not all can be known.
Owners findOwners(const UserPlaces& user) {
    const auto usualPlaces = InstanceRegistry::defaultSearchDirs(user);
    for (const auto& folder : usualPlaces) requireListable(folder);
    const auto elsewhere = requireElsewhere(user);
    Owners owners{.instances = {}, .unreadable = {}, .named = {}, .running = Running::now(user)};
    owners.instances = knownInstances(elsewhere, user);
    const auto isReadable = [&](const Path& bundle) {
        const auto found = std::ranges::find(owners.instances, bundle, &InstanceRecord::bundleURL);
        return found != owners.instances.end() || ambrel::configIn(bundle);
    };
    for (const auto& bundle : ambrel::bundlesIn(usualPlaces)) {
        if (!isReadable(bundle)) owners.unreadable.emplace(paths::stem(bundle));
    }
    for (const auto& entry : elsewhere.entries) {
        if (isReadable(entry.bundle)) continue;
        owners.unreadable.emplace(paths::stem(entry.bundle));
        // All homes lie in the user's own, and it is protected without this.
        if (!entry.home || folders::isOrLiesIn(user.home, *entry.home)) continue;
        owners.named.emplace_back(entry.bundle, *entry.home);
    }
    for (const auto& [bundle, home] : elsewhere.unregistered) {
        if (!isReadable(bundle)) owners.named.emplace_back(bundle, home);
    }
    return owners;
}

[[noreturn]] void refuseUnreadable(const Path& home, std::string_view name) {
    throw Refusal(Kind::homeIsShared, home,
                  "The data is not deleted: " + ambrel::utf8::oneLine(home) +
                      " may be the home of " + inQuotes(std::string(name)) +
                      ", whose bundle is missing or cannot be read.");
}

/// The name of its folder tells of a home where the entry, one of an earlier version, does not.
void requireNoUnreadable(const Path& home, const Owners& owners) {
    const std::string name(paths::lastComponent(home));
    if (owners.unreadable.contains(name)) refuseUnreadable(home, name);
    for (const auto& [bundle, theirs] : owners.named) {
        if (folders::isOrLiesIn(theirs, home) || folders::isOrLiesIn(home, theirs)) {
            refuseUnreadable(home, paths::stem(bundle));
        }
    }
}

/// Its bundle may be gone while its program still writes there.
void requireNothingRuns(const Path& home, const Running& running) {
    const auto ids = running.in(home);
    if (ids.empty()) return;
    throw Refusal(Kind::instanceRuns, home,
                  "The data is not deleted: something still runs in " +
                      ambrel::utf8::oneLine(home) + " (" + spokenProcesses(ids) + ").");
}

/// Throws what speaks against removing it.
void requireUnused(const Path& home, const Owners& owners, const UserPlaces& user) {
    InstanceRecord nobody;
    nobody.config.instanceHome = home;
    requireDeletableData(nobody, owners.instances, user);
    requireNoUnreadable(home, owners);
    requireNothingRuns(home, owners.running);
}

bool isUnused(const Path& home, const Owners& owners, const UserPlaces& user) {
    try {
        requireUnused(home, owners, user);
        return true;
    } catch (const Refusal&) {
        return false;
    }
}

std::vector<std::string> namesIn(const Path& folder) {
    try {
        return fileSystem::list(folder);
    } catch (const ambrel::FileError&) {
        return {}; // there is none, or nothing in it can be removed
    }
}

/// Folders that were homes, in use or not, each once.
std::vector<Path> candidates(const UserPlaces& user) {
    std::vector<Path> homes;
    const auto usual = usualFolder(user);
    // Where the folder is itself a link, what lies in it is somebody's own affair.
    if (isRealFolder(usual)) {
        for (const auto& name : namesIn(usual)) {
            if (!name.starts_with('.')) homes.push_back(paths::join(usual, name));
        }
    }
    for (const auto& home : ambrel::homesElsewhere::all(user)) {
        const auto isSame = [&](const Path& other) { return folders::areSame(other, home); };
        if (std::ranges::none_of(homes, isSame)) homes.push_back(home);
    }
    std::erase_if(homes, [](const Path& home) { return !isRealFolder(home); });
    std::ranges::sort(homes);
    return homes;
}

std::optional<std::chrono::sys_seconds> lastUse(const Path& home) {
    const auto log = paths::join(home, ambrel::InstanceLauncher::instanceLogName);
    for (const auto& place : {log, home}) {
        std::error_code code;
        const auto time = std::filesystem::last_write_time(place, code);
        if (code) continue;
        return std::chrono::floor<std::chrono::seconds>(std::chrono::file_clock::to_sys(time));
    }
    return std::nullopt;
}

LeftoverHome described(const Path& home, Measure measure) {
    return {.home = home,
            .size = measure == Measure::yes ? sizeOfTree(home) : TreeSize{},
            .lastUsed = lastUse(home)};
}

Path meantBy(const std::string& nameOrPath, const UserPlaces& user) {
    const bool isName = nameOrPath.find('/') == std::string::npos && !nameOrPath.empty() &&
                        !nameOrPath.starts_with('~');
    return isName ? paths::join(usualFolder(user), nameOrPath) : usablePath(nameOrPath, user);
}

} // namespace

std::vector<LeftoverHome> findLeftovers(const UserPlaces& user, Measure measure) {
    std::vector<LeftoverHome> found;
    const auto owners = findOwners(user);
    for (const auto& home : candidates(user)) {
        if (isUnused(home, owners, user)) found.push_back(described(home, measure));
    }
    return found;
}

LeftoverHome requireLeftover(const std::string& nameOrPath, const UserPlaces& user,
                             Measure measure) {
    const auto meant = meantBy(nameOrPath, user);
    const auto homes = candidates(user);
    const auto found = std::ranges::find_if(
        homes, [&](const Path& home) { return folders::areSame(home, meant); });
    if (found == homes.end() || !isRealFolder(meant)) {
        throw Refusal(Kind::unknownHome, meant,
                      ambrel::utf8::oneLine(meant) + " is no home that an instance left behind.",
                      Remedy::listLeftovers);
    }
    requireUnused(*found, findOwners(user), user);
    return described(*found, measure);
}

void removeLeftover(const LeftoverHome& leftover, const UserPlaces& user) {
    const auto home = requireLeftover(leftover.home, user, Measure::no).home;
    try {
        fileSystem::removeTree(home);
    } catch (const ambrel::FileError& error) {
        throw Refusal(Kind::dataRemains, home,
                      "Not all of " + ambrel::utf8::oneLine(home) + " could be deleted. " +
                          error.description());
    }
    ambrel::homesElsewhere::forget(home, user);
}

} // namespace korvane
