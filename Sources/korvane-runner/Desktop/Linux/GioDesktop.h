#pragma once

#include "korvane-runner/Desktop/Desktop.h"
#include "korvane-runner/Desktop/Linux/GLibLoop.h"
#include "korvane-runner/Desktop/Linux/SessionBus.h"
#include "korvane-runner/Desktop/Linux/StatusNotifierArea.h"
#include "korvane-runner/Desktop/Linux/X11Windows.h"

namespace korvane::runner {

/// A desktop of Linux for a host without windows: GIO alone. Made when that is open.
class GioDesktop final : public Desktop {
public:
    GioDesktop() : statusArea_(bus_, loop_) {}

    AppLoop& loop() override { return loop_; }
    StatusArea& statusArea() override { return statusArea_; }
    ProgramWindows& windows() override { return windows_; }
    void flush() override { bus_.flush(SessionBus::moment); }

private:
    GLibLoop loop_;
    SessionBus bus_;
    StatusNotifierArea statusArea_;
    X11Windows windows_;
};

} // namespace korvane::runner
