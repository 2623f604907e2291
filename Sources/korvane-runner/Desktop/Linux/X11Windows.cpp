#include "korvane-runner/Desktop/Linux/X11Windows.h"

namespace korvane::runner {

void X11Windows::bringToFront(const std::set<int>&) {}

} // namespace korvane::runner
