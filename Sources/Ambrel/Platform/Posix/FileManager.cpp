#include "Ambrel/Platform/FileManager.h"

#include "Ambrel/Platform/FileSystem.h"

namespace ambrel {

bool SystemFileManager::isExecutableFile(const Path& path) const {
    return fileSystem::isExecutableFile(path);
}

Path SystemFileManager::currentDirectory() const {
    try {
        return fileSystem::currentDirectory();
    } catch (const FileError&) {
        return "/"; // one that is gone holds no runner
    }
}

} // namespace ambrel
