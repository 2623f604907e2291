#include "Ambrel/Platform/SessionLinks.h"

#include "Ambrel/Platform/FileSystem.h"

namespace ambrel {

namespace {

constexpr unsigned privateMode = 0700; // what the Trash and base directory specifications ask for

Path trashOf(const UserPlaces& user) { return paths::join(user.data, "Trash"); }

/// Follows the user's own links: data folders may well lie on another disk.
void makePrivateFolders(const Path& folder) {
    if (fileSystem::isFolder(folder)) return;
    const Path above(paths::deletingLastComponent(folder));
    if (above.empty() || above == folder) return; // "/" that cannot be looked at
    makePrivateFolders(above);
    fileSystem::createFolder(folder, privateMode);
}

} // namespace

std::vector<SessionLink> sessionLinks(const UserPlaces& user) {
    const auto& [home, config, data] = user;
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

std::vector<SessionLink> trashLinks(const UserPlaces& user) {
    return {{".local/share/Trash", trashOf(user)}};
}

void makeUserTrash(const UserPlaces& user) {
    const auto trash = trashOf(user);
    // An account without a home does not get one from here.
    if (!fileSystem::isFolder(user.home) || fileSystem::kindOf(trash)) return;
    makePrivateFolders(user.data);
    fileSystem::createFolder(trash, privateMode);
    for (const auto* name : {"files", "info"}) {
        fileSystem::createFolder(paths::join(trash, name), privateMode);
    }
}

} // namespace ambrel
