#pragma once

#include "Ambrel/Home/NewFolders.h"
#include "Ambrel/Instance/ResolvedInstance.h"

#include <functional>

namespace ambrel {

/// Makes an instance's home ready for what will run in it. Nothing that is there is changed or
/// replaced, and no symbolic link below the home is passed.
struct HomePreparation {
    HomePreparation() = delete;

    /// Whether the home may be furnished: an absolute path that neither is the user's own home nor
    /// contains it.
    static bool isPrivate(const ResolvedInstance& instance, const UserPlaces& user);

    /// Makes the home, for this user alone, where it is missing; nothing for one that is not an
    /// absolute path. Throws FileError.
    static void make(const ResolvedInstance& instance, NewFolders& folders);

    /// Puts into the home what programs look for in it: the folders that arguments and environment
    /// name, because some programs start nothing without their profile folder and others go
    /// elsewhere, and for an application a user-dirs.dirs (xdg-user-dirs) that names the shared
    /// folders. The home has to exist and to be private, else nothing is done. What cannot be made
    /// is left out. Returns a sentence for each such thing.
    static std::vector<std::string> furnish(const ResolvedInstance& instance,
                                            const UserPlaces& user);

    /// For an instance that is about to start: a home that has gone is made and furnished again; in
    /// one that is there only missing data folders are made, and nothing that the user has removed
    /// comes back. Nothing for a kind without a home, and none is made where `mayMake` says no.
    /// Never fails: what is missing then, the launch reports.
    static void ensure(
        const ResolvedInstance& instance, const UserPlaces& user,
        const std::function<bool()>& mayMake = [] { return true; }) noexcept;

    /// The folders below the home that arguments and environment name, relative to it. An argument
    /// names one by an option of a known engine, or by one whose name ends in "dir", "directory",
    /// "folder" or "prefix"; a variable by a name that ends in DIR, HOME, TMP, TEMP, PREFIX, ROOT
    /// or FOLDER; any of them by a value that ends in a slash.
    static std::vector<Path> dataFolders(const ResolvedInstance& instance);
};

} // namespace ambrel
