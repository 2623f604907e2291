#include "Manager/Files/StagingFolder.h"

#include "Ambrel/Base/RandomName.h"
#include "Ambrel/Platform/FileSystem.h"

#include <utility>

namespace korvane {

using ambrel::Path;
namespace fileSystem = ambrel::fileSystem;

StagingFolder::StagingFolder(const Path& parent) {
    above_.make(parent);
    path_ = ambrel::paths::join(parent, ambrel::randomName());
    constexpr unsigned ownerOnly = 0700;
    fileSystem::createFolder(path_, ownerOnly);
}

StagingFolder::~StagingFolder() {
    if (path_.empty()) return;
    try {
        fileSystem::removeTree(path_);
    } catch (const std::exception&) {
        // A hidden folder that stays behind harms nobody, and the first failure is the one to tell.
    }
}

void StagingFolder::putInPlace(const Path& built, const Path& place) {
    fileSystem::move(built, place);
    above_.keep();
}

void StagingFolder::exchange(const Path& built, const Path& place) {
    fileSystem::exchange(built, place);
    above_.keep();
}

void StagingFolder::remove() { fileSystem::removeTree(std::exchange(path_, {})); }

} // namespace korvane
