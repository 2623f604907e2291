#include "korvane-runner/WaitingHost.h"

#include "Ambrel/Launch/SignalRelay.h"

namespace korvane::runner {

int WaitingHost::run(ambrel::HostedProgram& program, const ambrel::SignalHold& signals) {
    return ambrel::SignalRelay(program).waitUntilExit(signals);
}

} // namespace korvane::runner
