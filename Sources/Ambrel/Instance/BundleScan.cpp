#include "Ambrel/Instance/BundleScan.h"

#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Platform/FileSystem.h"

namespace ambrel {

namespace {

/// A folder that is missing or closed to this user holds nothing that could be shown.
std::vector<std::string> namesIn(const Path& folder) {
    try {
        return fileSystem::list(folder);
    } catch (const FileError&) {
        return {};
    }
}

} // namespace

std::vector<Path> bundlesIn(const std::vector<Path>& folders) {
    std::vector<Path> bundles;
    for (const auto& folder : folders) {
        for (const auto& name : namesIn(folder)) {
            if (paths::extension(name) == "app") bundles.push_back(paths::join(folder, name));
        }
    }
    return bundles;
}

std::vector<Path> defaultInstanceFolders(const UserPlaces& user) {
    return {user.expandingTilde("~/Applications")};
}

std::optional<InstanceConfig> configIn(const Path& bundle) {
    try {
        return InstanceConfig::decode(fileSystem::read(BundleLayout{bundle}.instanceJson()));
    } catch (const FileError&) {
        return std::nullopt; // no wrapper
    } catch (const DecodingError&) {
        return std::nullopt; // one that nobody can use
    }
}

} // namespace ambrel
