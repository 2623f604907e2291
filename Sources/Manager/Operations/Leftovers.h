#pragma once

#include "Ambrel/Platform/UserPlaces.h"
#include "Manager/Files/TreeSize.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace korvane {

/// A home that no instance has any more: that of one that was deleted without its data, or whose
/// bundle was thrown away by hand.
struct LeftoverHome {
    ambrel::Path home;
    TreeSize size; ///< nothing with Measure::no
    /// When a program last wrote into its log, else when something was last put into the folder;
    /// absent where that cannot be told.
    std::optional<std::chrono::sys_seconds> lastUsed;
};

/// The homes in ~/KorvaneInstances, and those on the list of homes elsewhere, that no instance has,
/// sorted by path. Instances are those in ~/Applications and those that a desktop entry of ours
/// stands for. What cannot be told from a home in use is left out: what is, holds or lies in an
/// instance's home, what is or holds a folder of the user's, a link, the home that the entry
/// of a bundle that cannot be read names, a folder with the name of such a bundle, and a home in
/// which something runs. Throws FileError where the instances or the entries cannot be listed.
std::vector<LeftoverHome> findLeftovers(const ambrel::UserPlaces& user, Measure measure);

/// The one of findLeftovers() that is meant by the name of its folder or by its path. Throws
/// Refusal unknownHome when it is none of them; for a folder that stands there, homeIsUsers,
/// homeIsShared, homeIsLink and instanceRuns, whose subject is the home, say why not. Throws
/// FileError as findLeftovers() does.
LeftoverHome requireLeftover(const std::string& nameOrPath, const ambrel::UserPlaces& user,
                             Measure measure);

/// Removes the home with all that is in it, links not followed. Looks again first, and throws what
/// requireLeftover() throws with nothing removed; dataRemains where it could not be removed, or not
/// all of it, which can be tried again.
void removeLeftover(const LeftoverHome& leftover, const ambrel::UserPlaces& user);

} // namespace korvane
