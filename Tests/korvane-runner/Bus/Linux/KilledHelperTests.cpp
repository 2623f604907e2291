#include "HelperScene.h"

#include "Support/Waiting.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <string>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

using namespace korvane::test;

namespace {

/// Asked before anything is started that waits for what is traced.
void requireTracingOfChildren() {
    const pid_t child = ::fork();
    REQUIRE(child >= 0);
    if (child == 0) {
        ::pause();
        ::_exit(0);
    }
    const int error = ::ptrace(PTRACE_SEIZE, child, nullptr, nullptr) == 0 ? 0 : errno;
    REQUIRE(::kill(child, SIGKILL) == 0);
    REQUIRE(::waitpid(child, nullptr, 0) == child);
    if (error == 0) return;
    FAIL("not shown, since the system lets nobody trace a child of its own (2 or 3 in "
         "/proc/sys/kernel/yama/ptrace_scope, or a container that forbids it): ",
         std::string(std::strerror(error)));
}

/// Has `process` go on, a child that has stopped itself, and kills what it forks then before that
/// does anything. Where only descendants may be traced these two are.
void killFirstChild(int process) {
    int status = 0;
    REQUIRE(::waitpid(process, &status, WUNTRACED) == process);
    REQUIRE(::ptrace(PTRACE_SEIZE, process, nullptr, PTRACE_O_TRACEFORK) == 0);
    REQUIRE(::kill(process, SIGCONT) == 0);
    while (true) {
        REQUIRE(::waitpid(process, &status, 0) == process);
        REQUIRE(WIFSTOPPED(status));
        if (status >> 16 == PTRACE_EVENT_FORK) break;
        const long signal = status >> 16 == 0 ? WSTOPSIG(status) : 0;
        REQUIRE(::ptrace(PTRACE_CONT, process, nullptr, signal) == 0);
    }
    unsigned long child = 0;
    REQUIRE(::ptrace(PTRACE_GETEVENTMSG, process, nullptr, &child) == 0);
    REQUIRE(::kill(static_cast<int>(child), SIGKILL) == 0);
    REQUIRE(::ptrace(PTRACE_DETACH, process, nullptr, nullptr) == 0);
    // Who traces it is told first.
    do {
        REQUIRE(::waitpid(static_cast<int>(child), &status, __WALL) == static_cast<int>(child));
    } while (WIFSTOPPED(status));
}

/// Returns when the helper has ended.
void killHelperBeside(const Started& runner, const BusStage& stage) {
    const int helper = stage.helperBeside(runner.id());
    REQUIRE(::kill(helper, SIGKILL) == 0);
    awaitEnd(helper);
}

} // namespace

TEST_CASE("a helper that is killed leaves the runner with the program, its signals and status") {
    BusStage stage;
    configureProbe(stage, SIGTERM);
    Started runner(stage);
    REQUIRE(stage.report.line() == "ready");

    REQUIRE(::kill(stage.helperBeside(runner.id()), SIGKILL) == 0);
    runner.send(SIGINT);
    CHECK(stage.report.line() == "2 user");
    runner.send(SIGTERM);

    CHECK(stage.report.line() == "15 user");
    CHECK(runner.waitStatus() == 40);
    CHECK(stage.runners().empty());
}

TEST_CASE("a child from before is not taken for the program of a helper that was killed") {
    requireTracingOfChildren();
    BusStage stage;
    const auto gate = makeFifo(stage.gate("gate"));
    stage.act({"exit:7"});
    // A shell that becomes the runner leaves it what it has started.
    const auto child = std::string(KORVANE_TEST_ACTOR) + " " + quoted(stage.report.path()) +
                       " wait:" + quoted(gate) + " exit:5";
    Started runner(
        {"/bin/sh", "-c", child + " & kill -STOP $$; exec " + quoted(stage.wrapper.runner)});

    killFirstChild(runner.id());
    stage.open(gate);

    CHECK(runner.waitStatus() == 7);
    CHECK(stage.runners().empty());
}

TEST_CASE("the socket of a helper that was killed is in nobody's way") {
    BusStage stage;
    const auto gate = makeFifo(stage.gate("gate"));
    StartedActor runner(stage, "there", {"say:there", "wait:" + gate, "exit:0"});
    REQUIRE(::kill(stage.helperBeside(runner.id()), SIGKILL) == 0);
    stage.open(gate);
    CHECK(runner.waitStatus() == 0);
    REQUIRE(isThere(stage.socketFolder() + "/socket"));

    stage.act({"own:org.example.Name", "exit:0"});
    Started again(stage);

    CHECK(stage.report.line() == owned);
    CHECK(again.waitStatus() == 0);
    stage.awaitHelpers();
    CHECK(namesIn(stage.runtime + "/korvane/bus").empty());
}

TEST_CASE("a start after a helper was killed gives the instance its names back") {
    BusStage stage;
    const auto first = makeFifo(stage.gate("first"));
    const auto second = makeFifo(stage.gate("second"));
    const auto third = makeFifo(stage.gate("third"));
    StartedActor one(stage, owned, {"own:org.example.Name", "wait:" + first, "exit:1"});
    // By a lease of the first.
    StartedActor two(stage, "there",
                     {"say:there", "wait:" + second, "own:org.example.Other", "exit:2"});
    const auto address = stage.address();

    killHelperBeside(one, stage);
    stage.act({"own:org.example.Name", "wait:" + third, "exit:3"});
    Started three(stage);

    CHECK(stage.report.line() == owned);
    CHECK(stage.address() == address);
    stage.open(second);
    CHECK(stage.report.line() == owned); // by the third's
    CHECK(two.waitStatus() == 2);
    stage.open(first);
    CHECK(one.waitStatus() == 1);
    stage.open(third);
    CHECK(three.waitStatus() == 3);
    stage.awaitHelpers();
    CHECK(namesIn(stage.runtime + "/korvane/bus").empty());
}

TEST_CASE("a second start serves the bus when the helper of the first was killed") {
    BusStage stage;
    const auto first = makeFifo(stage.gate("first"));
    const auto second = makeFifo(stage.gate("second"));
    const auto third = makeFifo(stage.gate("third"));
    StartedActor one(stage, owned, {"own:org.example.Name", "wait:" + first, "exit:1"});
    stage.addService("org.example.Service", {"own:org.example.Service", "serve"});
    // By a lease of the first, as the third.
    StartedActor two(stage, "there",
                     {"say:there", "wait:" + second, "own:org.example.Other",
                      "ping:org.example.Service", "exit:2"});
    StartedActor three(stage, owned, {"own:org.example.Third", "wait:" + third, "exit:3"});
    const auto address = stage.address();

    killHelperBeside(one, stage);
    while (!isAnswering(stage.socketFolder() + "/socket")) std::this_thread::yield();
    stage.open(second);

    CHECK(stage.report.line() == owned);
    expectBoth(stage, owned, answered);
    CHECK(stage.address() == address);
    CHECK(two.waitStatus() == 2);
    stage.open(third);
    CHECK(three.waitStatus() == 3);
    stage.open(first);
    CHECK(one.waitStatus() == 1);
    stage.awaitHelpers();
    CHECK(namesIn(stage.runtime + "/korvane/bus").empty());
}

TEST_CASE("a service whose helper was killed is told nothing but the end of its bus") {
    BusStage stage;
    const auto gate = makeFifo(stage.gate("gate"));
    const auto until = makeFifo(stage.gate("until"));
    stage.addService("org.example.Service",
                     {"process", "own:org.example.Service", "serve:" + until, "say:saved"});
    stage.act({"ping:org.example.Service", "wait:" + gate, "exit:4"});
    Started runner(stage);
    const int service = std::stoi(stage.report.line());
    expectBoth(stage, owned, answered);

    killHelperBeside(runner, stage);
    stage.open(gate);
    CHECK(runner.waitStatus() == 4);

    CHECK(stage.namesOnBus().empty());
    CHECK(::kill(service, 0) == 0);
    stage.open(until);
    CHECK(stage.report.line() == "saved");
    REQUIRE(::waitpid(service, nullptr, 0) == service);
}
