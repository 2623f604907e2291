#include "HelperScene.h"

#include "Support/Waiting.h"

#include <csignal>

using namespace korvane::test;

TEST_CASE("the runner ends with the status of a program that has names of its own") {
    for (const int status : {0, 7, 255}) {
        BusStage stage;
        stage.runCommand("exit " + std::to_string(status));
        CHECK(run({stage.wrapper.runner}).status == status);
        CHECK(stage.runners().empty()); // nobody finds something of it running
    }
    for (const int signal : {SIGKILL, SIGTERM, SIGSEGV}) {
        BusStage stage;
        stage.runCommand("ulimit -c 0; kill -" + std::to_string(signal) + " $$");
        const auto result = run({stage.wrapper.runner});
        CHECK(result.status == signal);
        CHECK(result.signal == 0);
        CHECK(result.error.empty());
    }
}

TEST_CASE("signals to the runner reach a program with names of its own, each time") {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        BusStage stage;
        CAPTURE(signal);
        const int last = signal == SIGTERM ? SIGINT : SIGTERM;
        configureProbe(stage, last);
        Started runner(stage);
        REQUIRE(stage.report.line() == "ready");

        runner.send(signal);
        CHECK(stage.report.line() == std::to_string(signal) + " user");
        runner.send(signal);
        CHECK(stage.report.line() == std::to_string(signal) + " user");
        runner.send(last);

        CHECK(stage.report.line() == std::to_string(last) + " user");
        CHECK(runner.waitStatus() == 40);
        stage.awaitHelpers();
    }
}

TEST_CASE("an interrupt typed at the terminal reaches a program with names of its own once") {
    BusStage stage;
    configureProbe(stage, SIGTERM);
    ProgramOnTerminal runner({stage.wrapper.runner});
    REQUIRE(stage.report.line() == "ready");

    // Stopped, so that an interrupt that is passed on finds the typed one taken and is seen.
    runner.stop();
    runner.type("\x03");
    CHECK(stage.report.line() == "2 kernel");
    runner.send(SIGTERM);
    runner.send(SIGCONT);

    CHECK(stage.report.line() == "15 user");
    CHECK(runner.wait() == 40);
    stage.awaitHelpers();
}

TEST_CASE("an interrupt typed before is passed on to a program with names of its own") {
    BusStage stage;
    stage.runCommand("");
    // The file itself is what tail(1) is told to follow.
    writeFile(stage.config.targetAppPath + "/Contents/MacOS/run",
              "#!" + untilSignaled()[0] + " -f\n");

    ProgramOnTerminal runner({stage.wrapper.runner},
                             ProgramOnTerminal::Start::interruptTypedBefore);

    CHECK(runner.wait() == SIGINT);
    stage.awaitHelpers();
}

TEST_CASE("services go at once when somebody has asked for the end of the instance") {
    BusStage stage;
    stage.addService("org.example.Service", {"own:org.example.Service", "serve"});
    const auto gate = makeFifo(stage.gate("gate"));
    stage.act({"ping:org.example.Service", "fork:0", "wait:" + gate, "exit:0"});
    Started runner(stage);
    expectBoth(stage, owned, answered);
    CHECK(runner.waitStatus() == 0);
    REQUIRE(stage.runners().size() == 1);

    // Nobody opens the gate: what the program has left is asked to end as well.
    REQUIRE(::kill(stage.runners().front(), SIGTERM) == 0);

    stage.awaitHelpers();
    CHECK(stage.namesOnBus().empty());
}

TEST_CASE("a request to end reaches the program though its runner was killed") {
    BusStage stage;
    configureProbe(stage, SIGTERM);
    Started runner(stage);
    REQUIRE(stage.report.line() == "ready");
    runner.send(SIGKILL);
    runner.wait();

    for (const int helper : stage.runners()) ::kill(helper, SIGTERM);

    CHECK(stage.report.line() == "15 user");
    stage.awaitHelpers();
}

TEST_CASE("signals to the runner reach the service that is the program") {
    BusStage stage;
    stage.addService("org.example.Target", {"own:org.example.Target", "serve"});
    const auto moved = makeFifo(stage.gate("moved"));
    stage.act({"process", "ping:org.example.Target", "exit:0"});
    Started runner(stage);
    const int client = std::stoi(stage.report.line());
    expectBoth(stage, owned, answered);
    awaitEnd(client);

    runner.send(SIGTERM);

    CHECK(runner.waitStatus() == SIGTERM);
    stage.awaitHelpers();
}
