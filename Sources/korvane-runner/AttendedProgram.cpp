#include "korvane-runner/AttendedProgram.h"

namespace korvane::runner {

using Watching = AppLoop::Watching;

AttendedProgram::AttendedProgram(ambrel::HostedProgram& program, const ambrel::SignalHold& signals)
    : program_(program), relay_(program), signals_(signals), end_(program) {}

void AttendedProgram::attachTo(AppLoop& loop) {
    loop.whenReadable(signals_.descriptor(), [this] {
        takeSignals();
        return Watching::goesOn;
    });
    loop.whenReadable(end_.descriptor(), [this, &loop] {
        if (program_.isRunning()) return Watching::goesOn;
        loop.end(program_.terminationStatus());
        return Watching::ends;
    });
}

void AttendedProgram::takeSignals() {
    while (const auto signal = signals_.next()) relay_.take(*signal);
}

} // namespace korvane::runner
