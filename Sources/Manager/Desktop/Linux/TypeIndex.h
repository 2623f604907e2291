#pragma once

#include "Ambrel/Base/Path.h"

namespace korvane::registration {

/// Has the index of the types that the entries in `folder` are offered for made anew: several
/// openers read nothing else. Never fails: without the tool for it others make the index, in time.
void ensureTypeIndex(const ambrel::Path& folder) noexcept;

} // namespace korvane::registration
