#include "BusStage.h"

#include <cstdio>
#include <set>
#include <unistd.h>

using namespace ambrel;
using namespace korvane::test;

TEST_CASE("without a bus a program starts as it did, and nothing is said of it") {
    const std::string unset = "unset DBUS_SESSION_BUS_ADDRESS; exec ";
    const std::string stale = "export DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent/bus; exec ";
    for (const auto& start : {unset, stale}) {
        BusStage stage;
        CAPTURE(start);
        const auto report = stage.wrapper.tmp / "out";
        stage.runCommand("echo \"$DBUS_SESSION_BUS_ADDRESS\" >" + quoted(report));

        const auto result = run({"/bin/sh", "-c", start + quoted(stage.wrapper.runner)});

        CHECK(result.status == 0);
        CHECK(result.error.empty());
        CHECK(readFile(report) == (start == unset ? "\n" : "unix:path=/nonexistent/bus\n"));
        CHECK_FALSE(isThere(stage.runtime + "/korvane"));
    }
}

TEST_CASE("a configuration that names a bus has the last word") {
    BusStage stage;
    const auto report = stage.wrapper.tmp / "out";
    stage.config.environment["DBUS_SESSION_BUS_ADDRESS"] = "unix:path=/mine";
    stage.runCommand("echo \"$DBUS_SESSION_BUS_ADDRESS\" >" + quoted(report));

    CHECK(run({stage.wrapper.runner}).status == 0);

    CHECK(readFile(report) == "unix:path=/mine\n");
    CHECK_FALSE(isThere(stage.runtime + "/korvane"));
}

TEST_CASE(
    "where there can be no socket the program starts on the user's bus, and a line says why") {
    BusStage stage;
    const auto report = stage.wrapper.tmp / "out";
    stage.runCommand("echo \"$DBUS_SESSION_BUS_ADDRESS\" >" + quoted(report) + "; exit 6");
    const auto users = stage.bus.address() + "\n";
    const std::string line = "runner: no names of its own on the bus" + dash;

    writeFile(stage.runtime + "/korvane");
    auto result = run({stage.wrapper.runner});
    CHECK(result.status == 6);
    CHECK(result.error == line + "Cannot open " + stage.runtime + "/korvane: Not a directory\n");
    CHECK(readFile(report) == users);
    REQUIRE(std::remove((stage.runtime + "/korvane").c_str()) == 0);

    makeFolder(stage.runtime + "/korvane");
    setMode(stage.runtime + "/korvane", 0755);
    result = run({stage.wrapper.runner});
    CHECK(result.status == 6);
    CHECK(result.error ==
          line + "Cannot use " + stage.runtime + "/korvane: Operation not permitted\n");
    CHECK(readFile(report) == users);
    REQUIRE(std::remove((stage.runtime + "/korvane").c_str()) == 0);

    result = run(commandInMountNamespace("mount -t tmpfs -o mode=700,nr_inodes=2 none " +
                                             quoted(stage.runtime) + "; mkdir " +
                                             quoted(stage.runtime + "/full"),
                                         {stage.wrapper.runner}));
    CHECK(result.status == 6);
    CHECK(result.error ==
          line + "Cannot make " + stage.runtime + "/korvane: No space left on device\n");
    CHECK(readFile(report) == users);
}

// The sanitizer of undefined behaviour looks at objects through a pipe, and takes it for a fault
// where there is no descriptor for that.
#ifndef __SANITIZE_ADDRESS__
TEST_CASE("a runner without a helper is nobody's parent but its program's") {
    BusStage stage;
    stage.config.extraArgs = {stage.report.path(), "orphan", "exit:6"};
    stage.runCommand("");
    const auto program = stage.wrapper.tmp / "T.app/Contents/MacOS/run";
    REQUIRE(::unlink(program.c_str()) == 0); // a shell does not do with so few descriptors
    copyProgram(KORVANE_TEST_ACTOR, program);
    const auto orphansParent = "parent " + std::to_string(::getpid());
    const std::string line = "runner: no names of its own on the bus" + dash;
    std::set<std::string> reasons;
    // One descriptor after the other is missing: for the connection between the two, for what the
    // helper waits for, and for nothing in the end.
    for (int limit = 6; limit < 30; ++limit) {
        CAPTURE(limit);
        // Whoever runs the tests may have left some open.
        const auto start = "exec 3>&- 4>&- 5>&- 6>&- 7>&- 8>&- 9>&-; ulimit -n " +
                           std::to_string(limit) + "; exec " + quoted(stage.wrapper.runner);
        const auto result = run({"/bin/sh", "-c", start});
        if (result.error.empty()) break;
        if (!beginsWith(result.error, line)) continue; // not even what is to be started can be read
        CHECK(stage.report.line() == orphansParent);
        CHECK(result.status == 6);
        reasons.insert(result.error.substr(line.size()));
    }

    CHECK(reasons.count("Too many open files\n") == 1); // to wait for anything
    stage.awaitHelpers();
    CHECK(namesIn(stage.runtime + "/korvane/bus").empty());
}
#endif

TEST_CASE("what the bus starts is not started without names of its own") {
    BusStage stage;
    const auto starter = stage.wrapper.tmp / "bin/gapplication";
    stage.config.targetAppPath = AppBundleBuilder(stage.wrapper.tmp / "Started.app")
                                     .entry("KorvaneProgram", "<string>" + starter + "</string>")
                                     .executable("run", "echo >" + quoted(stage.report.path()))
                                     .write();
    const auto configure = [&](const char* key, const std::string& value) {
        stage.config.infoPlistOverrides = {{key, value}};
        stage.wrapper.configure(stage.config);
    };
    const auto refusal = failed + "the session bus starts this application, and it would open " +
                         "with your own home without names of its own on the bus: ";
    const auto runner = quoted(stage.wrapper.runner);

    configure(sharedBusKey, "true");
    checkFailure(stage.wrapper.open(), refusal + "the instance shares the user's\n");
    configure(sharedBusKey, "false");
    checkFailure(run({"/bin/sh", "-c", "unset DBUS_SESSION_BUS_ADDRESS; exec " + runner}),
                 refusal + "there is no bus\n");
    checkFailure(run({"/bin/sh", "-c", "DBUS_SESSION_BUS_ADDRESS=tcp:host=a exec " + runner}),
                 refusal + "the bus has an address of a kind that is not known: tcp:host=a\n");
    writeFile(stage.runtime + "/korvane");
    checkFailure(stage.wrapper.open(),
                 refusal + "Cannot open " + stage.runtime + "/korvane: Not a directory\n");

    REQUIRE(::unlink((stage.runtime + "/korvane").c_str()) == 0);
    Started works(stage);
    CHECK(stage.report.line().empty());
    CHECK(works.waitStatus() == 0);
    stage.awaitHelpers();
}
