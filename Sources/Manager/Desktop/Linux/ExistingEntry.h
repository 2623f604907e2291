#pragma once

#include "Manager/Desktop/Linux/Places.h"

#include <optional>

namespace korvane::registration {

/// An entry of ours as it stands on disk, of whatever bundle.
struct ExistingEntry {
    ambrel::Path bundle;              ///< as the entry names it
    std::optional<ambrel::Path> home; ///< of its instance, where the entry names it
    bool hasIcons;                    ///< its icons are those in the theme that carry its id
    bool hasScript;                   ///< it starts the script that carries its id
    bool offersItself;                ///< it names types that it opens

    /// Whether it stands for the bundle at `path`, whatever the way to it.
    bool isFor(const ambrel::Path& path) const;
};

/// The entry in its place in the user's folder. Absent where nothing is there, where what is there
/// is no readable file (a link is not followed), or where it does not say whose it is.
std::optional<ExistingEntry> readEntry(const Places& places) noexcept;

} // namespace korvane::registration
