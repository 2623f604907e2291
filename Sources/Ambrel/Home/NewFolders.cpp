#include "Ambrel/Home/NewFolders.h"

#include "Ambrel/Platform/FileSystem.h"

namespace ambrel {

NewFolders::~NewFolders() {
    for (auto folder = made_.rbegin(); folder != made_.rend(); ++folder) {
        try {
            fileSystem::removeItem(*folder);
        } catch (const std::exception&) {
            // Something lies in it by now; then it stays, and so do those above it.
            return;
        }
    }
}

void NewFolders::make(const Path& folder) {
    if (fileSystem::isFolder(folder)) return;
    const Path above{paths::deletingLastComponent(folder)};
    if (!above.empty() && above != folder) make(above);
    if (fileSystem::isFolder(folder)) return; // ".." behind a folder that was missing
    fileSystem::createFolders(folder);
    made_.push_back(folder);
}

void NewFolders::makePrivate(const Path& folder) {
    if (fileSystem::isFolder(folder)) return;
    make(Path(paths::deletingLastComponent(folder)));
    if (fileSystem::isFolder(folder)) return;
    constexpr unsigned ownerOnly = 0700;
    fileSystem::createFolder(folder, ownerOnly);
    made_.push_back(folder);
}

} // namespace ambrel
