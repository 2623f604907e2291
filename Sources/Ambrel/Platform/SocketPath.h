#pragma once

#include <cstddef>

namespace ambrel {

/// The bytes that the path of a socket may have: 107 on Linux, 103 on macOS.
std::size_t longestSocketPath() noexcept;

} // namespace ambrel
