#include "Manager/Rules/UnregisteredHomes.h"

#include "Ambrel/Home/FolderRelation.h"
#include "Ambrel/Instance/DesktopId.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Manager/Rules/BundlePlace.h"
#include "Manager/Rules/InstanceLookup.h"

#include <algorithm>

namespace korvane::unregisteredHomes {

using ambrel::InstanceRecord;
using ambrel::Path;
using ambrel::UserPlaces;
namespace fileSystem = ambrel::fileSystem;
namespace paths = ambrel::paths;

namespace {

constexpr unsigned ownerFile = 0600;

Path folderOf(const UserPlaces& user) { return paths::join(user.data, "korvane/unregistered"); }

Path fileOf(const InstanceRecord& record, const UserPlaces& user) {
    return paths::join(folderOf(user), ambrel::desktopId(record.config.bundleId));
}

bool isFoundAnyway(const Path& bundle, const UserPlaces& user) {
    const Path folder{paths::deletingLastComponent(bundle)};
    const auto searched = ambrel::InstanceRegistry::defaultSearchDirs(user);
    return std::ranges::any_of(
        searched, [&](const Path& place) { return ambrel::folders::areSame(place, folder); });
}

} // namespace

void remember(const InstanceRecord& record, const UserPlaces& user) {
    const auto home = usableHome(record.config, user);
    // Named by a link it counts as the bundle that the link leads to.
    const auto bundle = bundleAt(record.bundleURL);
    if (!home || user.data.empty() || isFoundAnyway(bundle, user)) return;
    fileSystem::createFolders(folderOf(user));
    fileSystem::replace(fileOf(record, user), bundle + '\0' + *home, ownerFile);
}

void forget(const InstanceRecord& record, const UserPlaces& user) noexcept {
    try {
        const auto file = fileOf(record, user);
        if (fileSystem::kindOf(file)) fileSystem::removeItem(file);
    } catch (const std::exception&) {
        // Then a home is protected for longer than it needs to be.
    }
}

std::vector<Known> all(const UserPlaces& user) {
    std::vector<Known> found;
    const auto folder = folderOf(user);
    if (fileSystem::isMissing(folder)) return found;
    for (const auto& name : fileSystem::list(folder)) {
        const auto text = fileSystem::read(paths::join(folder, name));
        const auto end = text.find('\0');
        if (end == std::string::npos) continue;
        found.push_back({Path(text.substr(0, end)), Path(text.substr(end + 1))});
    }
    return found;
}

} // namespace korvane::unregisteredHomes
