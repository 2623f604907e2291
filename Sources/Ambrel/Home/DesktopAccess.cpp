#include "Ambrel/Home/DesktopAccess.h"

#include "Ambrel/Home/FolderRelation.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/GuardedFolder.h"
#include "Ambrel/Platform/SessionLinks.h"

#include <algorithm>

namespace ambrel {

namespace {

using fileSystem::ItemKind;

constexpr unsigned privateMode = 0700;

/// A program starts without these links too, only with less at hand: each failure ends one step.
template <class Step> void tryStep(const Step& step) noexcept {
    try {
        step();
    } catch (const std::exception&) {
    }
}

std::string nameOf(const SessionLink& link) {
    return std::string(paths::lastComponent(link.place));
}

/// Whether nothing stands at `name`, or an empty folder: all that a link may take the place of.
bool isFree(const GuardedFolder& folder, const std::string& name) {
    const auto kind = folder.kindOf(name);
    return !kind || (*kind == ItemKind::folder && folder.isEmptyFolder(name));
}

/// Whether the link could be made: no link or file stands on the way to its place, which is free.
bool isWayFree(const GuardedFolder& home, const SessionLink& link) {
    auto folder = home.findFolder("");
    auto rest = paths::deletingLastComponent(link.place);
    while (folder && !rest.empty()) {
        const std::string name(rest.substr(0, rest.find('/')));
        rest.remove_prefix(std::min(name.size() + 1, rest.size()));
        if (!folder->kindOf(name)) return true; // made when it is needed
        folder = folder->findFolder(name);
    }
    return folder && isFree(*folder, nameOf(link));
}

void linkOrLeave(const GuardedFolder& home, const SessionLink& link) {
    if (!link.target.starts_with('/') || !fileSystem::exists(link.target)) return;
    if (!isWayFree(home, link)) return;
    if (fileSystem::mayBeSameItem(paths::join(home.path(), link.place), link.target)) return;
    const auto folder = home.folder(paths::deletingLastComponent(link.place), privateMode);
    if (folder.kindOf(nameOf(link))) folder.removeEmptyFolder(nameOf(link));
    folder.createSymbolicLink(link.target, nameOf(link));
}

/// The home, unless it is or contains the user's own, where the links would replace what they
/// should lead to.
std::optional<GuardedFolder> linkableHome(const Path& home, const UserPlaces& user) {
    if (home.empty() || folders::isOrLiesIn(user.home, home)) return std::nullopt;
    return GuardedFolder::open(home);
}

} // namespace

void DesktopAccess::ensure(const Path& home, const UserPlaces& user) noexcept {
    tryStep([&] {
        const auto folder = linkableHome(home, user);
        if (!folder) return;
        for (const auto& link : sessionLinks(user)) tryStep([&] { linkOrLeave(*folder, link); });
    });
}

void DesktopAccess::ensureTrash(const Path& home, const UserPlaces& user) noexcept {
    tryStep([&] {
        const auto folder = linkableHome(home, user);
        if (!folder) return;
        for (const auto& link : trashLinks(user)) {
            if (!isWayFree(*folder, link)) continue; // then the user's needs not be made either
            tryStep([&] { makeUserTrash(user); });   // another start may have been faster
            linkOrLeave(*folder, link);
        }
    });
}

} // namespace ambrel
