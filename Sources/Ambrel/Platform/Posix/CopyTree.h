#pragma once

#include "Ambrel/Base/Path.h"

#include <string>
#include <sys/stat.h>
#include <vector>

namespace ambrel {

/// An item that was copied, as it was then.
struct CopiedItem {
    std::string name;
    struct stat status {};
    std::vector<CopiedItem> entries; ///< of a folder
};

/// Copies the item at `source` with all it holds to `destination`, where nothing is: modes, times,
/// owners where allowed, extended attributes, links as links. All of it is on the disk when this
/// returns. Throws FileError and may leave a part at `destination`.
CopiedItem copyTree(const Path& source, const Path& destination);

/// Removes from the disk what `item`, copied from `source`, describes, but nothing that was added
/// or changed since. Returns how many items were removed and sets `complete` to whether all were.
std::size_t removeCopied(const Path& source, const CopiedItem& item, bool& complete);

} // namespace ambrel
