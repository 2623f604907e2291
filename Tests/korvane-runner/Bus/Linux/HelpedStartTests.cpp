#include "HelperScene.h"

#include "Support/Report.h"
#include "Support/Waiting.h"
#include "korvane-runner/Bus/PrivateNames.h"

#include <cstdio>
#include <set>
#include <sstream>

using namespace ambrel;
using namespace korvane::test;
using korvane::runner::bus::privatePrefix;

namespace {

/// What the program of the instance is given, but for what is another's for each process.
std::multiset<std::string> surroundings(const Path& report) {
    std::multiset<std::string> lines;
    std::istringstream text(readFile(report));
    for (std::string line; std::getline(text, line);) {
        if (line.rfind("env DBUS_SESSION_BUS_ADDRESS=", 0) != 0) lines.insert(line);
    }
    return lines;
}

} // namespace

TEST_CASE("the names of an application's programs are its own on the user's bus") {
    BusStage stage;
    StartedActor runner(stage, owned,
                        {"own:org.example.Name", "wait:" + makeFifo(stage.gate("gate")), "exit:0"});

    CHECK(stage.namesOnBus() ==
          Strings{privatePrefix(stage.config.bundleId) + ".org.example.Name"});

    stage.open(stage.gate("gate"));
    CHECK(runner.waitStatus() == 0);
    stage.awaitHelpers();
    CHECK(stage.namesOnBus().empty());
    CHECK(namesIn(stage.runtime + "/korvane/bus").empty());
}

TEST_CASE("a program has all that it has without names of its own, but for the bus's address") {
    BusStage stage;
    const ScopedVariable starter("DBUS_STARTER_ADDRESS", "unix:path=/users");
    const ScopedVariable type("DBUS_STARTER_BUS_TYPE", "session");
    const auto report = stage.wrapper.tmp / "out";
    stage.runCommand("exec " + quoted(probe) + " report " + quoted(report) + " a");

    CHECK(run({stage.wrapper.runner}).status == 0);
    stage.awaitHelpers();
    const auto with = surroundings(report);
    auto environment = Report(report).environment();
    CHECK(beginsWith(environment["DBUS_SESSION_BUS_ADDRESS"],
                     "unix:path=" + stage.runtime + "/korvane/bus/"));
    CHECK(environment.count("DBUS_STARTER_ADDRESS") == 0);
    CHECK(environment.count("DBUS_STARTER_BUS_TYPE") == 0);

    stage.config.infoPlistOverrides[sharedBusKey] = "true";
    stage.wrapper.configure(stage.config);
    CHECK(run({stage.wrapper.runner}).status == 0);
    auto without = surroundings(report);
    CHECK(Report(report).environment()["DBUS_SESSION_BUS_ADDRESS"] == stage.bus.address());
    CHECK(without.erase("env DBUS_STARTER_ADDRESS=unix:path=/users") == 1);
    CHECK(without.erase("env DBUS_STARTER_BUS_TYPE=session") == 1);
    CHECK(with == without);
}

TEST_CASE("the limit of descriptors is a program's and a service's from before, not the helper's") {
    BusStage stage;
    const auto limit = "ulimit -Sn >" + quoted(stage.report.path());
    const auto gate = makeFifo(stage.gate("gate"));
    stage.addCommandService("org.example.Service", limit + "; exit 1");
    stage.act({"ping:org.example.Service", "wait:" + gate, "exit:0"});
    const auto raised = run({"/bin/sh", "-c", "ulimit -Hn"}).output;
    REQUIRE(raised != "321\n");

    Started runner({"/bin/sh", "-c", "ulimit -Sn 321; exec " + quoted(stage.wrapper.runner)});
    expectBoth(stage, "321", "ping org.freedesktop.DBus.Error.Spawn.ChildExited");
    const auto helper = stage.helperBeside(runner.id());
    const auto limits = readFile("/proc/" + std::to_string(helper) + "/limits");
    const auto line = limits.substr(limits.find("Max open files") + 14);
    CHECK(std::to_string(std::stol(line)) + "\n" == raised);
    stage.open(gate);
    CHECK(runner.waitStatus() == 0);
    stage.awaitHelpers();

    stage.runCommand(limit);
    Started again({"/bin/sh", "-c", "ulimit -Sn 321; exec " + quoted(stage.wrapper.runner)});
    CHECK(stage.report.line() == "321");
    CHECK(again.waitStatus() == 0);
    stage.awaitHelpers();
}

TEST_CASE("a helper keeps no library that only the start has needed") {
    BusStage stage;
    const auto gate = makeFifo(stage.gate("gate"));
    // It serves programs, and so has started its own.
    StartedActor runner(stage, owned, {"own:org.example.Name", "wait:" + gate, "exit:0"});

    const auto helper = stage.helperBeside(runner.id());
    CHECK_FALSE(contains(readFile("/proc/" + std::to_string(helper) + "/maps"), "libplist"));

    stage.open(gate);
    CHECK(runner.waitStatus() == 0);
    stage.awaitHelpers();
}

TEST_CASE("a start that fails says what it says without names of its own") {
    BusStage stage;
    stage.runCommand("true");
    REQUIRE(std::remove((stage.wrapper.tmp / "T.app/Contents/MacOS/run").c_str()) == 0);
    const auto with = run({stage.wrapper.runner});
    stage.awaitHelpers();
    CHECK(namesIn(stage.runtime + "/korvane/bus").empty());

    stage.config.infoPlistOverrides[sharedBusKey] = "true";
    stage.wrapper.configure(stage.config);
    const auto without = run({stage.wrapper.runner});

    CHECK(with.status == 1);
    CHECK(with.status == without.status);
    CHECK(with.error == without.error);
    CHECK(beginsWith(with.error, failed + "Cannot start "));
}
