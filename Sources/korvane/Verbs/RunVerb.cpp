#include "korvane/Verbs/RunVerb.h"

#include "Ambrel/Launch/SignalRelay.h"
#include "Ambrel/Platform/ChildProcess.h"
#include "Ambrel/Platform/SignalHold.h"
#include "Manager/Operations/Opening.h"
#include "Manager/Rules/InstanceLookup.h"
#include "korvane/Verbs/InstanceVerb.h"

namespace korvane {

namespace {

int runInstance(const std::string& name, const Surroundings& surroundings) {
    // Before anything that may start a thread, as the hold asks.
    const ambrel::SignalHold signals;
    const auto record = requireInstance(name, surroundings.user);
    ambrel::ChildProcess runner(
        {.executable = prepareRun(record, surroundings.user), .arguments = {}});
    runner.launch();
    return ambrel::SignalRelay(runner).waitUntilExit(signals);
}

} // namespace

Verb runVerb() {
    return instanceVerb("run", "Run an instance and wait for it; ends with the program's status.",
                        "korvane run Work", runInstance);
}

} // namespace korvane
