#pragma once

#include "Ambrel/Base/Path.h"

namespace ambrel {

/// Where the things of the person lie for whom this process works. Made once, in main, and handed
/// down: what the process is told of its user may change while it runs, as HOME does in a program
/// that hosts a web site with an instance's home, and these must not change with it.
struct UserPlaces {
    /// The home folder, without a slash at its end; empty when nothing tells.
    Path home;
    /// The folders below which the user's programs keep settings and data, existing or not; empty
    /// where there is no home and nothing else tells.
    Path config;
    Path data;

    /// `path` with a leading "~" replaced by `home`, or a leading "~name" by that user's home
    /// folder, which the user database is asked for. An unknown name, a user without a home and
    /// anything else leave the path as it is; nothing else is normalised.
    Path expandingTilde(const Path& path) const;

    /// Those of a user with this home (empty: none) whose programs keep everything where programs
    /// of this system do unless they are told otherwise.
    static UserPlaces usual(const Path& home);

    /// Those of this process, asked now. `home` is CFFIXED_USER_HOME when set and not empty, else
    /// the account's in the user database, else HOME. On Linux `config` and `data` are
    /// XDG_CONFIG_HOME and XDG_DATA_HOME where they are absolute, else their defaults below `home`
    /// (XDG Base Directory Specification); with CFFIXED_USER_HOME set the defaults always, because
    /// the variables belong to another home then. On macOS both are
    /// ~/Library/Application Support.
    static UserPlaces ofThisProcess();

    bool operator==(const UserPlaces&) const = default;
};

} // namespace ambrel
