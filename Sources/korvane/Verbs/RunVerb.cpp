#include "korvane/Verbs/RunVerb.h"

#include "Ambrel/Launch/InstanceLauncher.h"
#include "Ambrel/Launch/SignalRelay.h"
#include "Ambrel/Platform/ChildProcess.h"
#include "Ambrel/Platform/FileError.h"
#include "Ambrel/Platform/FileFollower.h"
#include "Ambrel/Platform/SignalHold.h"
#include "Manager/Operations/Opening.h"
#include "Manager/Rules/InstanceLookup.h"
#include "korvane/Verbs/InstanceVerb.h"

#include <memory>

namespace korvane {

using ambrel::FileFollower;

namespace {

constexpr int standardOutput = 1;

/// The program writes into its log, which is shown here as it grows. Null for a document, whose
/// opener writes here itself, and where there can be no log: the program then does so too.
std::unique_ptr<FileFollower> tryFollowLog(const ambrel::InstanceRecord& record,
                                           const ambrel::UserPlaces& user) {
    const auto home = usableHome(record.config, user);
    if (!home || record.config.kind == ambrel::ShortcutKind::file) return nullptr;
    try {
        return std::make_unique<FileFollower>(
            *home, std::string(ambrel::InstanceLauncher::instanceLogName), standardOutput);
    } catch (const ambrel::FileError&) {
        return nullptr; // the log keeps what it wrote
    }
}

/// Whoever reads may take their time, or ask this program to end meanwhile.
void showRest(FileFollower& follower, const ambrel::SignalHold& signals) {
    follower.finish([&signals] { signals.wake(); });
    while (!follower.isDone() && !signals.wait()) {
    }
}

int runInstance(const std::string& name, const Surroundings& surroundings) {
    // Before anything that may start a thread, as the hold asks.
    const ambrel::SignalHold signals;
    const auto record = requireInstance(name, surroundings.user);
    ambrel::ChildProcess runner(
        {.executable = prepareRun(record, surroundings.user), .arguments = {}});
    const auto follower = tryFollowLog(record, surroundings.user);
    runner.launch();
    const int status = ambrel::SignalRelay(runner).waitUntilExit(signals);
    if (follower) showRest(*follower, signals);
    return status;
}

} // namespace

Verb runVerb() {
    return instanceVerb("run",
                        "Run an instance, show what it writes, and end with the program's status.",
                        "korvane run Work", runInstance);
}

} // namespace korvane
