#pragma once

#include "Ambrel/Base/Path.h"

namespace korvane::runner {

/// Where a web instance keeps what is not the person's own file, below its home. Everything lies
/// where data lies and nothing where caches do: what pages keep with the Cache API is data to them,
/// though the engine keeps it among its own.
struct WebStorage {
    ambrel::Path home;

    /// Below the home; all else lies in it.
    static constexpr const char* relativeRoot = ".local/share/web";

    ambrel::Path root() const { return ambrel::paths::join(home, relativeRoot); }
    ambrel::Path data() const { return ambrel::paths::join(root(), "data"); }
    ambrel::Path cache() const { return ambrel::paths::join(root(), "cache"); }
    /// The instance's icon as a picture that the desktop reads.
    ambrel::Path icon() const { return ambrel::paths::join(root(), "icon.png"); }

    /// Makes the folders that are missing, for this user alone, in a home that is there. Whether
    /// all can be used in the end: an engine that is given a folder which cannot ends the program.
    bool ensure() const noexcept;
};

} // namespace korvane::runner
