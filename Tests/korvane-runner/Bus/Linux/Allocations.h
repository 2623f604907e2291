#pragma once

#include <cstddef>

namespace korvane::test {

/// How many times more this program finds memory, the last of them not included; negative: always.
/// It goes on to find some when it has found none once.
extern long allocationsLeft;

/// What this program has taken and not given back, in bytes.
extern std::size_t allocated;

} // namespace korvane::test
