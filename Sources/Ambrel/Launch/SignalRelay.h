#pragma once

#include "Ambrel/Launch/SignalPolicy.h"
#include "Ambrel/Platform/HostedProgram.h"

namespace ambrel {

/// Passes signals that were held for this process on to one child, so that ending this program ends
/// the one that it stands for. The child must outlive it.
class SignalRelay {
public:
    explicit SignalRelay(HostedProgram& child) : child_(child) {}

    /// Passes `signal` on if the policy says so. Reaches nobody when the child has ended.
    void take(const ArrivedSignal& signal);

    /// Blocks until the child has ended, taking each signal that arrives meanwhile. Returns the
    /// child's termination status.
    int waitUntilExit(const SignalHold& signals);

private:
    HostedProgram& child_;
    SignalPolicy policy_;
};

} // namespace ambrel
