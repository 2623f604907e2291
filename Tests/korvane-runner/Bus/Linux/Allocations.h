#pragma once

namespace korvane::test {

/// How many times more this program finds memory, the last of them not included; negative: always.
/// It goes on to find some when it has found none once.
extern long allocationsLeft;

} // namespace korvane::test
