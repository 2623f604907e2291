#include "Ambrel/Instance/InstanceRegistry.h"

#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Instance/BundleScan.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/Text.h"

#include <algorithm>

namespace ambrel {

namespace {

UserPlaces withPlainHome(UserPlaces user) {
    user.home = Path(paths::withoutTrailingSlashes(user.home));
    return user;
}

/// Whether `folder` is the user's home or a folder that this lies in, however both are spelled. A
/// link is neither: it is removed itself, and nothing behind it.
bool holdsHome(const Path& folder, const UserPlaces& user) {
    const Path item{paths::withoutTrailingSlashes(folder)};
    if (fileSystem::kindOf(item) != fileSystem::ItemKind::folder) return false;
    for (auto place = fileSystem::resolved(user.home).value_or(user.home); place.starts_with('/');
         place = Path(paths::deletingLastComponent(place))) {
        if (fileSystem::isSameItem(place, item)) return true;
        if (place == "/") break;
    }
    return false;
}

/// Data that cannot be removed stays: the wrapper is gone by then, which is what was asked first.
void removeIfPossible(const Path& path) {
    try {
        if (fileSystem::exists(path)) fileSystem::removeTree(path);
    } catch (const FileError&) {
    }
}

} // namespace

std::optional<Path> InstanceRecord::iconURL() const {
    auto icon = BundleLayout{bundleURL}.icon();
    return fileSystem::exists(icon) ? std::optional(std::move(icon)) : std::nullopt;
}

InstanceRegistry::InstanceRegistry(UserPlaces user, const std::optional<std::vector<Path>>& dirs)
    : searchDirs(dirs ? *dirs : defaultSearchDirs(user)), user_(withPlainHome(std::move(user))) {}

std::vector<Path> InstanceRegistry::defaultSearchDirs(const UserPlaces& user) {
    return defaultInstanceFolders(user);
}

std::vector<InstanceRecord> InstanceRegistry::list() const {
    std::vector<InstanceRecord> records;
    for (const auto& bundle : bundlesIn(searchDirs)) {
        if (auto record = recordFor(bundle)) records.push_back(std::move(*record));
    }
    const text::NameOrder order;
    std::ranges::stable_sort(records, [&order](const auto& left, const auto& right) {
        return order.precedes(left.config.displayName, right.config.displayName);
    });
    return records;
}

std::optional<InstanceRecord> InstanceRegistry::recordFor(const Path& bundleURL) const {
    auto config = configIn(bundleURL);
    if (!config) return std::nullopt;
    return InstanceRecord{bundleURL, std::move(*config)};
}

void InstanceRegistry::remove(const InstanceRecord& record, UserData data) const {
    // One that may be there but cannot be seen counts as there: its data must not go alone.
    if (!fileSystem::isMissing(record.bundleURL)) fileSystem::removeTree(record.bundleURL);
    if (data == UserData::keep) return;
    const auto home = record.config.resolvedHome(user_);
    // An instance may be set up to live in the user's own home folder.
    if (home.empty() || home == user_.home || holdsHome(home, user_)) return;
    removeIfPossible(home);
}

void InstanceRegistry::update(const InstanceRecord& record,
                              const std::function<void(InstanceConfig&)>& edit) const {
    auto config = record.config;
    edit(config);
    try {
        fileSystem::write(BundleLayout{record.bundleURL}.instanceJson(), config.encode());
    } catch (const FileError&) {
        return; // whoever must know reads the file back
    } catch (const EncodingError&) {
        return;
    }
}

} // namespace ambrel
