#include "HelperScene.h"

#include "Ambrel/Launch/ProgramProcesses.h"
#include "Support/Waiting.h"

#include <thread>

using namespace ambrel;
using namespace korvane::test;

namespace {

/// Another instance, whose program ends later than any before, has lost its service when this
/// returns.
void startAndEndOther() {
    BusStage other;
    other.config.bundleId = "org.example.other";
    other.addService("org.example.Service", {"own:org.example.Service", "serve"});
    other.act({"ping:org.example.Service", "exit:0"});
    Started later(other);
    CHECK(later.waitStatus() == 0);
    other.awaitHelpers();
}

} // namespace

TEST_CASE("a service's child is the service's, also with an environment of its own") {
    BusStage stage;
    const auto gate = makeFifo(stage.gate("gate"));
    const auto address = "DBUS_SESSION_BUS_ADDRESS=\"$DBUS_SESSION_BUS_ADDRESS\"";
    const auto child = std::string(KORVANE_TEST_ACTOR) + " " + quoted(stage.report.path());
    stage.addCommandService("org.example.Service", "env -i " + std::string(address) + " " + child +
                                                       " own:org.example.Service serve; true");
    stage.act({"ping:org.example.Service", "wait:" + gate, "exit:0"});
    Started runner(stage);
    expectBoth(stage, owned, answered);

    stage.open(gate);
    CHECK(runner.waitStatus() == 0);

    stage.awaitHelpers(); // nobody else needs the bus
    CHECK(stage.namesOnBus().empty());
}

TEST_CASE("services that a program has called go when nobody needs them any more") {
    BusStage stage;
    stage.addService("org.example.Service", {"own:org.example.Service", "serve"});
    stage.act({"ping:org.example.Service", "exit:0"});
    Started runner(stage);
    expectBoth(stage, owned, answered);

    CHECK(runner.waitStatus() == 0);

    stage.awaitHelpers();
    CHECK(stage.namesOnBus().empty());
}

TEST_CASE("a service that is told without a folder is found where a shell finds it") {
    BusStage stage;
    writeScript(stage.wrapper.tmp / "bin/bare-service", "exit 5");
    const ScopedVariable path("PATH", stage.wrapper.tmp / "bin" + ":/usr/bin:/bin");
    writeFile(stage.home + "/.local/share/dbus-1/services/org.example.Service.service",
              "[D-BUS Service]\nName=org.example.Service\nExec=bare-service\n");
    stage.act({"ping:org.example.Service", "exit:0"});
    Started runner(stage);

    CHECK(stage.report.line() == "ping org.freedesktop.DBus.Error.Spawn.ChildExited");
    CHECK(runner.waitStatus() == 0);
    stage.awaitHelpers();
}

TEST_CASE("a service with windows stays when the program ends, and others for it") {
    BusStage stage;
    const auto gate = makeFifo(stage.gate("gate"));
    stage.addEntry("org.example.Windows");
    stage.addService("org.example.Windows", {"own:org.example.Windows", "serve:" + gate, "exit:0"});
    stage.addService("org.example.Service", {"own:org.example.Service", "serve"});
    stage.act({"ping:org.example.Service", "ping:org.example.Windows", "exit:0"});
    Started runner(stage);
    expectBoth(stage, owned, answered);
    expectBoth(stage, owned, answered);
    CHECK(runner.waitStatus() == 0);

    startAndEndOther();

    CHECK(stage.namesOnBus().size() == 2);
    stage.open(gate);
    stage.awaitHelpers();
    CHECK(stage.namesOnBus().empty());
}

TEST_CASE("the windows of an instance are those of its program and of its services") {
    BusStage stage;
    const auto gate = makeFifo(stage.gate("gate"));
    stage.addService("org.example.Service", {"process", "own:org.example.Service", "serve"});
    stage.act({"process", "ping:org.example.Service", "wait:" + gate, "exit:0"});
    Started runner(stage);
    const int program = std::stoi(stage.report.line());
    const int service = std::stoi(stage.report.line());
    expectBoth(stage, owned, answered);

    const auto user = stage.wrapper.user.places();
    const auto found = processesOf(stage.helperBeside(runner.id()),
                                   ResolvedInstance::of(stage.config, user), user);

    CHECK(found.count(program) == 1);
    CHECK(found.count(service) == 1);
    CHECK(found.count(runner.id()) == 0);
    stage.open(gate);
    CHECK(runner.waitStatus() == 0);
    stage.awaitHelpers();
}

TEST_CASE("a service of the application's own name is the program when its client has ended") {
    for (const int status : {0, 9}) {
        BusStage stage;
        CAPTURE(status);
        const auto gate = makeFifo(stage.gate("gate"));
        stage.addService("org.example.Target", {"own:org.example.Target", "serve:" + gate,
                                                "exit:" + std::to_string(status)});
        stage.act({"process", "ping:org.example.Target", "exit:0"});
        Started runner(stage);
        const int client = std::stoi(stage.report.line());
        expectBoth(stage, owned, answered);
        awaitEnd(client);

        stage.open(gate);

        CHECK(runner.waitStatus() == status);
        stage.awaitHelpers();
    }
}

TEST_CASE("what a service with windows leaves behind is not ended with it") {
    struct Row {
        std::string name; ///< of the service
        bool isProgram;   ///< whether it is the program when its client has ended
    };
    for (const auto& row : {Row{"org.example.Target", true}, Row{"org.example.Windows", false}}) {
        BusStage stage;
        CAPTURE(row.name);
        const auto job = makeFifo(stage.gate("job"));
        const auto gate = makeFifo(stage.gate("gate"));
        const auto ended = makeFifo(stage.gate("ended"));
        const auto actor = std::string(KORVANE_TEST_ACTOR) + " " + quoted(stage.report.path());
        stage.addEntry(row.name);
        stage.addCommandService(row.name, actor + " wait:" + quoted(job) + " say:saved &\n" +
                                              actor + " own:" + row.name +
                                              " serve:" + quoted(gate) + " say:left\n" + actor +
                                              " wait:" + quoted(ended));
        const auto last = row.isProgram ? "exit:0" : "wait:" + makeFifo(stage.gate("program"));
        stage.act({"process", "ping:" + row.name, last, "exit:0"});
        Started runner(stage);
        const int client = std::stoi(stage.report.line());
        expectBoth(stage, owned, answered);
        if (row.isProgram) awaitEnd(client);

        // As a program does that gives back its name before it ends.
        stage.open(gate);
        CHECK(stage.report.line() == "left");
        while (!stage.namesOnBus().empty()) std::this_thread::yield();
        stage.open(ended);
        if (!row.isProgram) stage.open(stage.gate("program"));
        CHECK(runner.waitStatus() == 0);

        startAndEndOther();

        REQUIRE(stage.runners().size() == 1);
        stage.open(job);
        CHECK(stage.report.line() == "saved");
        stage.awaitHelpers();
    }
}
