#pragma once

#include "Ambrel/Platform/UserPlaces.h"

#include <string_view>
#include <vector>

namespace ambrel {

/// An entry of an instance's home that should lead to something of the user's own.
struct SessionLink {
    std::string_view place; ///< relative to the instance's home
    Path target;            ///< whether it exists or not; not absolute where there is no user home
};

/// What the programs of this system look for below the home folder although it belongs to the
/// user's session and not to the program's data: the address of the input method, fonts and their
/// settings, themes and icons. None on macOS.
std::vector<SessionLink> sessionLinks(const UserPlaces& user);

/// The same for the place into which programs throw files away, which belongs together with the
/// folders that they throw them away from. None on macOS.
std::vector<SessionLink> trashLinks(const UserPlaces& user);

/// Makes the user's own trash, closed to others, where the user has none. Nothing on macOS. Throws
/// FileError; a part may remain then.
void makeUserTrash(const UserPlaces& user);

} // namespace ambrel
