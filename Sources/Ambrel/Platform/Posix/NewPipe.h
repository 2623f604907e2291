#pragma once

#include <array>

namespace ambrel {

/// Opens the reading and the writing end of a new pipe, both closed in children. 0, or the error
/// number.
int openPipe(std::array<int, 2>& ends) noexcept;

} // namespace ambrel
