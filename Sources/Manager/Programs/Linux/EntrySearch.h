#pragma once

#include "Ambrel/Base/Path.h"
#include "Ambrel/Platform/ProcessEnvironment.h"

#include <optional>
#include <string>
#include <vector>

namespace korvane {

/// The desktop entries with the id `id` ("chromium" or "chromium.desktop"), in the order of the
/// folders: the first one hides the others.
std::vector<ambrel::Path> findDesktopEntries(const std::string& id, const ambrel::UserPlaces& user,
                                             const ambrel::Environment& environment);

/// The one that counts; absent when there is none.
std::optional<ambrel::Path> findDesktopEntry(const std::string& id, const ambrel::UserPlaces& user,
                                             const ambrel::Environment& environment);

/// All desktop entries in the folders for them, in their order; one that another of the same name
/// hides is left out. Entries in sub-folders are not listed.
std::vector<ambrel::Path> listDesktopEntries(const ambrel::UserPlaces& user,
                                             const ambrel::Environment& environment);

/// A desktop entry by its id: its path below the folder for entries with "-" for "/", and without
/// its ending.
struct IdentifiedEntry {
    std::string id;
    ambrel::Path file;
};

/// All desktop entries, those in sub-folders too; one that another of the same id hides is left
/// out.
std::vector<IdentifiedEntry> identifiedEntries(const ambrel::UserPlaces& user,
                                               const ambrel::Environment& environment);

} // namespace korvane
