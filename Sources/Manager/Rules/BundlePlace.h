#pragma once

#include "Ambrel/Base/Path.h"

/// How the path of a bundle is taken: a slash at its end says nothing, and a link to a bundle is
/// not another instance.
namespace korvane {

/// Whether both paths lead to the same bundle, there or not.
bool isSameBundle(const ambrel::Path& left, const ambrel::Path& right);

/// Whether a link stands at `path`.
bool isLink(const ambrel::Path& path);

/// The bundle itself, where a link to it stands at `path`; else `path`, without a slash at its end.
ambrel::Path bundleAt(const ambrel::Path& path);

} // namespace korvane
