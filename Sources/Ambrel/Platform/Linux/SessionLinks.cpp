#include "Ambrel/Platform/SessionLinks.h"

#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/UserPaths.h"

namespace ambrel {

namespace {

constexpr unsigned privateMode = 0700; // what the Trash and base directory specifications ask for

Path userTrash() { return paths::join(userDataFolder(), "Trash"); }

/// Follows the user's own links: data folders may well lie on another disk.
void makePrivateFolders(const Path& folder) {
    if (fileSystem::isFolder(folder)) return;
    const Path above(paths::deletingLastComponent(folder));
    if (above.empty() || above == folder) return; // "/" that cannot be looked at
    makePrivateFolders(above);
    fileSystem::createFolder(folder, privateMode);
}

} // namespace

std::vector<DesktopLink> desktopLinks() {
    const auto home = userHome();
    const auto config = userConfigFolder();
    const auto data = userDataFolder();
    return {
        {".config/ibus/bus", paths::join(config, "ibus/bus")},
        {".local/share/fonts", paths::join(data, "fonts")},
        {".fonts", paths::join(home, ".fonts")},
        {".config/fontconfig", paths::join(config, "fontconfig")},
        {".themes", paths::join(home, ".themes")},
        {".icons", paths::join(home, ".icons")},
        {".local/share/themes", paths::join(data, "themes")},
        {".local/share/icons", paths::join(data, "icons")},
    };
}

std::vector<DesktopLink> trashLinks() { return {{".local/share/Trash", userTrash()}}; }

void makeUserTrash() {
    // An account without a home does not get one from here.
    if (!fileSystem::isFolder(userHome()) || fileSystem::kindOf(userTrash())) return;
    makePrivateFolders(userDataFolder());
    fileSystem::createFolder(userTrash(), privateMode);
    for (const auto* name : {"files", "info"}) {
        fileSystem::createFolder(paths::join(userTrash(), name), privateMode);
    }
}

} // namespace ambrel
