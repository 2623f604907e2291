#pragma once

#include "Ambrel/Base/Path.h"

#include <cstdint>

namespace korvane {

/// How much something on disk is.
struct TreeSize {
    std::uint64_t items = 0; ///< files, folders and links, the outermost one among them
    std::uint64_t bytes = 0; ///< what the files hold, not what they take up

    bool operator==(const TreeSize&) const = default;
};

/// Whether a plan tells how large what goes is. Whoever shows that to nobody saves the time.
enum class Measure { yes, no };

/// The size of the item at `path` with all that lies below it. No link is followed; a link counts
/// as an item of no bytes. What cannot be seen does not count: never fails, and nothing where there
/// is nothing. Takes as long as reading every folder.
TreeSize sizeOfTree(const ambrel::Path& path) noexcept;

} // namespace korvane
