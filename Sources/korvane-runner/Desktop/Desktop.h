#pragma once

#include "korvane-runner/Desktop/AppLoop.h"
#include "korvane-runner/Desktop/ProgramWindows.h"
#include "korvane-runner/Desktop/StatusArea.h"

#include <memory>
#include <stdexcept>

namespace korvane::runner {

/// Why a host cannot show itself: a phrase that names what is missing and, where a package holds
/// it, that package.
class DesktopError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// What every host with an event loop asks of a desktop. One a process, made on the main thread.
class Desktop {
public:
    /// For a host without windows: opens no toolkit and no display. Throws DesktopError.
    static std::unique_ptr<Desktop> open();

    virtual ~Desktop() = default;

    virtual AppLoop& loop() = 0;
    virtual StatusArea& statusArea() = 0;
    virtual ProgramWindows& windows() = 0;

    /// Waits until what was handed to the desktop is on its way, for a moment at most. For the end.
    virtual void flush() = 0;
};

} // namespace korvane::runner
