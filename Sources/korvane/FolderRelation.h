#pragma once

#include "Ambrel/Path.h"

/// How two places in the file system lie to each other, whatever names and links lead there.
namespace korvane::folders {

/// `path` (absolute) with links resolved as far as it exists, and "." and ".." taken out.
ambrel::Path canonical(const ambrel::Path& path);

/// Whether both are the same place, existing or not.
bool areSame(const ambrel::Path& left, const ambrel::Path& right);

/// Whether `inner` is `outer` or lies somewhere below it, by name or by device and inode.
bool isOrLiesIn(const ambrel::Path& inner, const ambrel::Path& outer);

} // namespace korvane::folders
