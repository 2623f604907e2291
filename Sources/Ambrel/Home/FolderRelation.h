#pragma once

#include "Ambrel/Base/Path.h"

/// How two places in the file system lie to each other, whatever names and links lead there.
namespace ambrel::folders {

/// `path` (absolute) with links resolved as far as it exists, and "." and ".." taken out.
Path canonical(const Path& path);

/// Whether both are the same place, existing or not.
bool areSame(const Path& left, const Path& right);

/// Whether `inner` is `outer` or lies somewhere below it, by name or by device and inode.
bool isOrLiesIn(const Path& inner, const Path& outer);

/// The same for two absolute paths by their text alone, without looking at the file system.
bool isOrLiesInByText(const Path& inner, const Path& outer);

} // namespace ambrel::folders
