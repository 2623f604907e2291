#pragma once

#include "Ambrel/Base/Path.h"

#include <cstddef>

namespace ambrel {

/// The bytes that the path of a socket may have: 107 on Linux, 103 on macOS.
std::size_t longestSocketPath() noexcept;

/// Whether a socket is at `path` that is this user's, whether or not anybody listens there.
bool isSocketOfUser(const Path& path) noexcept;

} // namespace ambrel
