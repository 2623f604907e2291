#pragma once

#include "Ambrel/Base/Path.h"

namespace ambrel {

/// Gives the open file `copy` the extended attributes of `original`. Those of the user must all
/// come over, else FileError naming `path` is thrown; the system's own (labels, access lists) come
/// over where it allows.
void copyExtendedAttributes(int original, int copy, const Path& path);

} // namespace ambrel
