#include "HelperScene.h"

#include "Support/Waiting.h"
#include "korvane-runner/Bus/PrivateNames.h"

#include <sys/wait.h>

using namespace ambrel;
using namespace korvane::test;
using korvane::runner::bus::privatePrefix;

TEST_CASE("a second start has the bus of the first, whichever ends first") {
    for (const bool firstEndsFirst : {true, false}) {
        BusStage stage;
        CAPTURE(firstEndsFirst);
        const auto first = makeFifo(stage.gate("first"));
        const auto second = makeFifo(stage.gate("second"));
        StartedActor one(
            stage, owned,
            {"own:org.example.Name", "wait:" + first, "own:org.example.Other", "exit:1"});
        const auto address = stage.address();
        StartedActor two(
            stage, answered,
            {"ping:org.freedesktop.DBus", "wait:" + second, "own:org.example.Name", "exit:2"});
        CHECK(stage.address() == address);

        if (firstEndsFirst) {
            stage.open(first);
            CHECK(stage.report.line() == owned);
            CHECK(one.waitStatus() == 1);
            stage.open(second);
            CHECK(stage.report.line() == owned); // by the bus that the first has left
            CHECK(two.waitStatus() == 2);
        } else {
            stage.open(second);
            CHECK(stage.report.line() == "own (2,)"); // the first has it
            CHECK(two.waitStatus() == 2);
            stage.open(first);
            CHECK(stage.report.line() == owned);
            CHECK(one.waitStatus() == 1);
        }
        stage.awaitHelpers();
        CHECK(namesIn(stage.runtime + "/korvane/bus").empty());
    }
}

TEST_CASE("an instance that another one's program starts is the user's, and outlives that one") {
    BusStage stage;
    const auto gate = makeFifo(stage.gate("gate"));
    const auto second = makeFifo(stage.gate("second"));
    stage.act({"own:org.example.Name", "wait:" + second, "own:org.example.Other", "exit:2"});
    auto other = stage.config;
    other.bundleId = "org.example.second";
    const Path runner = stage.wrapper.tmp / "V.app/Contents/MacOS/runner";
    copyProgram(KORVANE_TEST_RUNNER, runner);
    writeFile(stage.wrapper.tmp / "V.app/Contents/Resources/instance.json", other.encode());
    const auto starter = AppBundleBuilder(stage.wrapper.tmp / "Starter.app")
                             .executable("run", quoted(runner) + " & read line <" + quoted(gate))
                             .write();
    stage.config.targetAppPath = starter;
    stage.wrapper.configure(stage.config);

    Started one(stage);
    REQUIRE(stage.report.line() == owned);
    CHECK(stage.namesOnBus() == Strings{privatePrefix(other.bundleId) + ".org.example.Name"});

    stage.open(gate);
    CHECK(one.waitStatus() == 0);
    stage.awaitHelpers(); // of the first
    CHECK(namesIn(stage.runtime + "/korvane/bus").size() == 1);
    stage.open(second);
    CHECK(stage.report.line() == owned);
    for (const int process : stage.runners(runner)) ::waitpid(process, nullptr, 0);
    CHECK(stage.runners(runner).empty());
    CHECK(namesIn(stage.runtime + "/korvane/bus").empty());
}

TEST_CASE("an instance that shares the bus shares the user's, also where another one starts it") {
    BusStage stage;
    const auto report = stage.wrapper.tmp / "out";
    stage.runCommand("echo \"$DBUS_SESSION_BUS_ADDRESS$DBUS_STARTER_ADDRESS\" >" + quoted(report));
    stage.config.infoPlistOverrides[sharedBusKey] = "true";
    const Path runner = stage.wrapper.tmp / "V.app/Contents/MacOS/runner";
    copyProgram(KORVANE_TEST_RUNNER, runner);
    writeFile(stage.wrapper.tmp / "V.app/Contents/Resources/instance.json", stage.config.encode());
    stage.config.infoPlistOverrides.clear();
    stage.config.targetAppPath =
        AppBundleBuilder(stage.wrapper.tmp / "Starter.app")
            .executable("run", "DBUS_STARTER_ADDRESS=x exec " + quoted(runner))
            .write();
    stage.wrapper.configure(stage.config);

    CHECK(run({stage.wrapper.runner}).status == 0);

    CHECK(readFile(report) == stage.bus.address() + "\n");
    stage.awaitHelpers();
}
