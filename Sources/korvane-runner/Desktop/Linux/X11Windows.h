#pragma once

#include "korvane-runner/Desktop/ProgramWindows.h"

namespace korvane::runner {

/// The windows on an X server. TODO(port): finds none.
class X11Windows final : public ProgramWindows {
public:
    void bringToFront(const std::set<int>& processes) override;
};

} // namespace korvane::runner
