#pragma once

#include "korvane-runner/Desktop/ProgramWindows.h"

#include <memory>

namespace korvane::runner {

/// The windows on the X server that the environment names; those of Wayland's own programs are
/// nobody else's. A server that does not answer holds up nothing: a thread asks it, and what is
/// wanted meanwhile waits there, the last of it alone.
class X11Windows final : public ProgramWindows {
public:
    X11Windows();

    void bringToFront(const std::set<int>& processes) override;

private:
    struct State;

    std::shared_ptr<State> state_;
};

} // namespace korvane::runner
