#pragma once

#include "Ambrel/Launch/SignalRelay.h"
#include "Ambrel/Platform/ChildEnd.h"
#include "Ambrel/Platform/SignalSource.h"
#include "korvane-runner/Desktop/AppLoop.h"

namespace korvane::runner {

/// What a host with an event loop owes the program beside it: signals that ask this process to end
/// are passed on to the program, and its end ends the loop with its termination status. The same as
/// the waiting host's work, for a loop that also serves a toolkit.
class AttendedProgram {
public:
    /// To be made on the main thread, after the program was launched and before the toolkit is
    /// touched, which may start threads (see SignalSource). All three must outlive it, and it must
    /// outlive the loop's run. Throws FileError when the program cannot be watched; it runs on
    /// then.
    AttendedProgram(ambrel::HostedProgram& program, const ambrel::SignalHold& signals);

    /// From here on `loop` does the work.
    void attachTo(AppLoop& loop);

private:
    void takeSignals();

    ambrel::HostedProgram& program_;
    ambrel::SignalRelay relay_;
    ambrel::SignalSource signals_;
    ambrel::ChildEnd end_;
};

} // namespace korvane::runner
