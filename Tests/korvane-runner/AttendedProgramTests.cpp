#include "Support/Environment.h"
#include "Support/Expect.h"
#include "Support/Programs.h"
#include "Support/Report.h"
#include "korvane-runner/Signals.h"

#include <algorithm>
#include <csignal>

using namespace korvane::test;

namespace {

/// The command that attends `program` in an event loop; see LoopProgram.cpp.
Strings attending(const Strings& program, const std::string& early = "never",
                  const std::string& before = "running", const std::string& task = "nothing") {
    Strings command{KORVANE_TEST_LOOP, early, before, task};
    command.insert(command.end(), program.begin(), program.end());
    return command;
}

Strings shell(const std::string& script) { return {"/bin/sh", "-c", script}; }

Strings signalReporter(const Fifo& fifo, int last) {
    return {KORVANE_TEST_PROBE, "signals", fifo.path(), std::to_string(last)};
}

} // namespace

TEST_CASE("the end of an attended program ends the loop with its status") {
    for (const int status : {0, 7, 255}) {
        CHECK(run(attending(shell("exit " + std::to_string(status)))).status == status);
    }
    const auto killed = run(attending(shell("kill -KILL $$")));
    CHECK(killed.status == SIGKILL);
    CHECK(killed.signal == 0);
}

TEST_CASE("a program that ended before the loop began ends it at once, reaped or not") {
    for (const std::string before : {"ended", "reaped"}) {
        CAPTURE(before);
        CHECK(run(attending(shell("exit 8"), "never", before)).status == 8);
    }
}

TEST_CASE("a request to end that finds the program gone changes nothing") {
    for (const std::string before : {"ended", "reaped"}) {
        CAPTURE(before);
        CHECK(run(attending(shell("exit 8"), "beforeLoop", before)).status == 8);
    }
}

TEST_CASE("signals that arrive in the loop are passed on, and a second one as well") {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        const TempDir tmp;
        Fifo fifo(tmp / "fifo");
        CAPTURE(signal);
        const int last = signal == SIGTERM ? SIGINT : SIGTERM;
        RunningProgram running({.command = attending(signalReporter(fifo, last))});
        REQUIRE(fifo.line() == "ready");

        running.send(signal);
        CHECK(fifo.line() == std::to_string(signal) + " user");
        running.send(signal);
        CHECK(fifo.line() == std::to_string(signal) + " user");
        running.send(last);

        CHECK(running.wait().status == 40);
    }
}

TEST_CASE("a request to end that comes before the loop, or before the program, is passed on") {
    for (const std::string early : {"beforeLaunch", "beforeLoop"}) {
        CAPTURE(early);
        const auto result = run(attending(untilSignaled(), early));
        CHECK(result.status == SIGTERM); // the program's end, not the loop's
        CHECK(result.signal == 0);
    }
}

TEST_CASE("in a loop an interrupt typed at the terminal reaches the program once") {
    const TempDir tmp;
    Fifo fifo(tmp / "fifo");
    ProgramOnTerminal host(attending(signalReporter(fifo, SIGTERM)));
    REQUIRE(fifo.line() == "ready");

    // Stopped, so that an interrupt that is passed on finds the typed one taken and is seen.
    host.stop();
    host.type("\x03");
    CHECK(fifo.line() == "2 kernel");
    // Both wait at the host in this order, so a passed-on interrupt would come first.
    host.send(SIGTERM);
    host.send(SIGCONT);

    CHECK(fifo.line() == "15 user");
    CHECK(host.wait() == 40);
}

TEST_CASE("in a loop an interrupt typed before the program is there is passed on to it") {
    ProgramOnTerminal host(attending(untilSignaled()),
                           ProgramOnTerminal::Start::interruptTypedBefore);

    CHECK(host.wait() == SIGINT);
}

TEST_CASE("in a loop a terminal that goes away is told to the program of a session's leader") {
    const TempDir tmp;
    Fifo fifo(tmp / "fifo");
    ProgramOnTerminal host(attending(signalReporter(fifo, SIGHUP)));
    REQUIRE(fifo.line() == "ready");

    host.closeTerminal();

    CHECK(fifo.line() == "1 user");
    CHECK(host.wait() == 40);
}

TEST_CASE("in a loop a hang-up signal that is ignored at the start stays ignored") {
    const TempDir tmp;
    Fifo fifo(tmp / "fifo");
    RunningProgram running(
        {.command = attending(signalReporter(fifo, SIGTERM)), .ignoredSignals = {SIGHUP}});
    REQUIRE(fifo.line() == "ready");

    running.send(SIGHUP);
    running.send(SIGTERM);

    CHECK(fifo.line() == "15 user");
    CHECK(running.wait().status == 40);
}

TEST_CASE("children and signals of other code in the process are told to it") {
    const auto result = run(attending(untilSignaled(), "never", "running", "others"));

    CHECK(result.status == SIGTERM);
    std::istringstream output(result.output);
    Strings lines;
    for (std::string line; std::getline(output, line);) lines.push_back(line);
    std::sort(lines.begin(), lines.end());
    CHECK(lines == Strings{"child signal", "own signal", "spawned 3", "subprocess 4"});
}

TEST_CASE("a request to end that finds another thread after the loop ends nothing") {
    CHECK(run(attending(shell("exit 7"), "never", "running", "thread")).status == 7);
}

TEST_CASE("what other code starts has no signal blocked and none ignored on this account") {
    const TempDir tmp;

    const auto result = run({.command = attending(untilSignaled(), "never", "running", "spawn"),
                             .environment = {{"REPORTS", tmp.path()}}});

    CHECK(result.status == SIGTERM);
    for (const std::string way : {"posix_spawn", "fork", "subprocess"}) {
        CAPTURE(way);
        const Report report(tmp / way);
        CHECK(report.lines("SigBlk") == Strings{"0000000000000000"});
        CHECK(report.ignoredSignals() == 0);
    }
}
