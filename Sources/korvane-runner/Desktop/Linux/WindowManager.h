#pragma once

#include <set>

namespace korvane::runner {

/// What one asks the window manager of the X server that the environment names, by the Extended
/// Window Manager Hints. Waits for the server, for ever where that does not answer.
namespace windowManager {

/// As ProgramWindows says. Without effect where there is no server, no window manager or not the
/// library to talk to them.
void bringToFront(const std::set<int>& processes) noexcept;

} // namespace windowManager

} // namespace korvane::runner
