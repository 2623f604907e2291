#pragma once

#include "Ambrel/Platform/HostedProgram.h"
#include "Ambrel/Platform/SignalHold.h"

namespace korvane::runner {

/// The host of an instance that is nothing but a program: no toolkit, no event loop.
struct WaitingHost {
    WaitingHost() = delete;

    /// Blocks until `program` has ended and returns its termination status. Passes on to it what
    /// asks this process to end.
    static int run(ambrel::HostedProgram& program, const ambrel::SignalHold& signals);
};

} // namespace korvane::runner
