#include "Wrapper.h"

#include "Support/Report.h"
#include "korvane-runner/Signals.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace ambrel;
using namespace korvane::test;

namespace {

InstanceConfig signalReporter(const Wrapper& wrapper, const Fifo& fifo, int last) {
    return commandConfig(wrapper.tmp / "h", probe, {"signals", fifo.path(), std::to_string(last)});
}

} // namespace

TEST_CASE("a program that a signal ended makes its number the runner's status") {
    for (const int signal : {SIGKILL, SIGTERM, SIGSEGV, SIGHUP, SIGINT, SIGUSR1}) {
        const Wrapper wrapper;
        wrapper.configure(
            shell(wrapper.tmp / "h", "ulimit -c 0; kill -" + std::to_string(signal) + " $$"));
        const auto result = wrapper.open();
        CAPTURE(signal);
        CHECK(result.status == signal);
        CHECK(result.signal == 0);
        CHECK(result.error.empty());
    }
}

TEST_CASE(
    "signals that ask the runner to end are passed on and it ends with its program's status") {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        const Wrapper wrapper;
        Fifo fifo(wrapper.tmp / "fifo");
        wrapper.configure(signalReporter(wrapper, fifo, signal));
        CAPTURE(signal);
        RunningProgram running({.command = {wrapper.runner}});
        REQUIRE(fifo.line() == "ready");

        running.send(signal);

        CHECK(fifo.line() == std::to_string(signal) + " user");
        CHECK(running.wait().status == 40);
    }
}

TEST_CASE("a program that ignores the request to end keeps the runner waiting for it") {
    const Wrapper wrapper;
    Fifo fifo(wrapper.tmp / "fifo");
    wrapper.configure(signalReporter(wrapper, fifo, SIGINT));
    RunningProgram running({.command = {wrapper.runner}});
    REQUIRE(fifo.line() == "ready");

    running.send(SIGTERM);
    CHECK(fifo.line() == "15 user");
    running.send(SIGTERM);
    CHECK(fifo.line() == "15 user");
    running.send(SIGINT);

    CHECK(fifo.line() == "2 user");
    CHECK(running.wait().status == 40);
}

TEST_CASE("an interrupt typed at the terminal reaches the program once") {
    const Wrapper wrapper;
    Fifo fifo(wrapper.tmp / "fifo");
    wrapper.configure(signalReporter(wrapper, fifo, SIGTERM));
    ProgramOnTerminal runner({wrapper.runner});
    REQUIRE(fifo.line() == "ready");

    // Stopped, so that an interrupt that is passed on finds the typed one taken and is seen.
    runner.stop();
    runner.type("\x03");
    CHECK(fifo.line() == "2 kernel");
    // Both wait at the runner in this order, so a passed-on interrupt would come first.
    runner.send(SIGTERM);
    runner.send(SIGCONT);

    CHECK(fifo.line() == "15 user");
    CHECK(runner.wait() == 40);
}

TEST_CASE("an interrupt typed before the program is there is passed on to it") {
    const Wrapper wrapper;
    const auto command = untilSignaled();
    wrapper.configure(
        commandConfig(wrapper.tmp / "h", command[0], {command.begin() + 1, command.end()}));

    ProgramOnTerminal runner({wrapper.runner}, ProgramOnTerminal::Start::interruptTypedBefore);

    CHECK(runner.wait() == SIGINT);
}

TEST_CASE("a terminal that goes away is told to the program of a runner that leads its session") {
    const Wrapper wrapper;
    Fifo fifo(wrapper.tmp / "fifo");
    wrapper.configure(signalReporter(wrapper, fifo, SIGHUP));
    ProgramOnTerminal runner({wrapper.runner});
    REQUIRE(fifo.line() == "ready");

    runner.closeTerminal();

    CHECK(fifo.line() == "1 user");
    CHECK(runner.wait() == 40);
}

TEST_CASE("a runner whose standard error has no reader still ends with its own status") {
    const Wrapper wrapper;
    int ends[2];
    REQUIRE(::pipe(ends) == 0);
    ::close(ends[0]);
    const pid_t runner = ::fork();
    if (runner == 0) {
        ::dup2(ends[1], STDERR_FILENO);
        ::execl(wrapper.runner.c_str(), wrapper.runner.c_str(), nullptr);
        ::_exit(127);
    }
    ::close(ends[1]);
    int status = 0;
    REQUIRE(::waitpid(runner, &status, 0) == runner);

    CHECK(WIFEXITED(status));
    CHECK(WEXITSTATUS(status) == 1);
}

TEST_CASE("a hang-up signal that is ignored at the start stays ignored in runner and program") {
    const Wrapper wrapper;
    Fifo fifo(wrapper.tmp / "fifo");
    wrapper.configure(signalReporter(wrapper, fifo, SIGTERM));
    {
        RunningProgram running({.command = {wrapper.runner}, .ignoredSignals = {SIGHUP}});
        REQUIRE(fifo.line() == "ready");
        running.send(SIGHUP);
        running.send(SIGTERM);
        CHECK(fifo.line() == "15 user");
        CHECK(running.wait().status == 40);
    }
    wrapper.configure(commandConfig(wrapper.tmp / "h", probe, {"report", wrapper.tmp / "report"}));
    run({.command = {wrapper.runner}, .ignoredSignals = {SIGHUP, SIGINT, SIGPIPE}});

    CHECK(Report(wrapper.tmp / "report").ignoredSignals() == 1U << (SIGHUP - 1));
    CHECK(Report(wrapper.tmp / "report").lines("SigBlk") == Strings{"0000000000000000"});
}

TEST_CASE("a runner whose parent ignores the end of children still hands on the status") {
    const Wrapper wrapper;
    wrapper.configure(shell(wrapper.tmp / "h", "exit 3"));

    CHECK(run({.command = {wrapper.runner}, .ignoredSignals = {SIGCHLD}}).status == 3);
}

TEST_CASE("without the library for status items a program runs as ever, and the runner says why") {
    Wrapper wrapper;
    Fifo fifo(wrapper.tmp / "fifo");
    const Fifo withoutWriter(wrapper.tmp / "silent");
    const auto libraries = makeFolder(wrapper.tmp / "libraries");
    writeFile(libraries + "/libgio-2.0.so.0", "");
    auto config = shell(wrapper.tmp / "home", "echo ready >" + quoted(fifo.path()) + "; exec cat " +
                                                  quoted(withoutWriter.path()));
    config.menuBarIcon = true;
    wrapper.configure(config);

    RunningProgram running(
        {.command = {wrapper.runner}, .environment = {{"LD_LIBRARY_PATH", libraries}}});
    REQUIRE(fifo.line() == "ready");
    running.send(SIGTERM);
    const auto result = running.wait();

    CHECK(result.status == SIGTERM);
    CHECK(beginsWith(result.error, "runner: cannot show the status item" + dash));
    CHECK(contains(result.error, "libglib2.0-0\n"));
}

TEST_CASE("a runner without standard streams gives none of its files to them") {
    const Wrapper wrapper;
    wrapper.configure(commandConfig(wrapper.tmp / "h", probe, {"report", wrapper.tmp / "report"}));

    const auto result = run({.command = {wrapper.runner}, .closedStreams = {0, 1, 2}});

    CHECK(result.status == 0);
    const auto log = wrapper.tmp / "h/korvane-instance.log";
    CHECK(Report(wrapper.tmp / "report").lines("fd") ==
          Strings{"0 /dev/null", "1 " + log, "2 " + log});
    wrapper.configure(std::string("x"));
    CHECK(run({.command = {wrapper.runner}, .closedStreams = {0, 1, 2}}).status == 1);
    CHECK(readFile(wrapper.json) == "x");
}
