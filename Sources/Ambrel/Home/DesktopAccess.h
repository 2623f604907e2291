#pragma once

#include "Ambrel/Platform/UserPlaces.h"

namespace ambrel {

/// Links what belongs to the user's session, and not to a program's data, into an instance's home.
struct DesktopAccess {
    DesktopAccess() = delete;

    /// Links what programs look for below the home folder although it belongs to the user's session
    /// (see sessionLinks()) to the user's own: input method, fonts, themes and icons. A link is
    /// made only where its target exists, no link stands on the way to its place, and nothing or an
    /// empty folder is there. Nothing at all in a home that is or contains the user's own. Missing
    /// folders on the way are made with mode 0700; failures are swallowed.
    static void ensure(const Path& home, const UserPlaces& user) noexcept;

    /// The same for the trash, so that a file thrown away from a shared folder is found in the
    /// user's, which is made first where the user has none.
    static void ensureTrash(const Path& home, const UserPlaces& user) noexcept;
};

} // namespace ambrel
