#pragma once

#include "Manager/Desktop/Linux/ExistingEntry.h"
#include "Manager/Desktop/Linux/ThemeIcons.h"

#include <optional>
#include <string>
#include <vector>

namespace korvane::registration {

/// Everything that stands on disk for one registered instance.
struct EntryFiles {
    std::string entry;
    std::optional<std::string> script;
    std::vector<ThemeIcon> icons;
    bool offersItself = false; ///< the entry names types that it opens
};

/// The first item that stands where the script or an icon of `files` is to go and belongs neither
/// to the entry `existing` nor to an earlier try that wrote the same; absent when there is none.
std::optional<ambrel::Path> findStranger(const Places& places, const EntryFiles& files,
                                         const std::optional<ExistingEntry>& existing);

/// The first file of `files` that is not on disk as it should be, or that `existing` has beyond
/// them; absent when writeFiles() would change nothing.
std::optional<ambrel::Path> findOutdated(const Places& places, const EntryFiles& files,
                                         const ExistingEntry& existing);

/// Writes what is not there yet, each file in one step and the entry last, then removes what
/// `existing` had beyond it. Throws FileError.
void writeFiles(const Places& places, const EntryFiles& files,
                const std::optional<ExistingEntry>& existing);

/// Removes the entry and then all that `existing` says belongs to it. Throws FileError: for the
/// entry, with everything else left, or for the first of the others, once all were tried.
void removeFiles(const Places& places, const ExistingEntry& existing);

} // namespace korvane::registration
