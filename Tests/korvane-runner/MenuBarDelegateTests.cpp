#include "korvane-runner/MenuBarDelegate.h"

#include "Ambrel/Platform/ChildProcess.h"

#include "Support/Builders.h"
#include "Support/Environment.h"
#include "Support/Expect.h"
#include "Support/Programs.h"
#include "korvane-runner/Desktop/FakeDesktop.h"
#include "korvane-runner/Signals.h"

#include <csignal>

using namespace ambrel;
using namespace korvane::runner;
using namespace korvane::test;

namespace {

/// An instance whose program is a shell with `script`, which can write to $REPORT, and read
/// from $SILENCE for as long as it likes.
struct Stage {
    explicit Stage(const std::string& script) : user(tmp) {
        auto config = commandConfig(tmp / "home", "/bin/sh");
        config.displayName = "Work";
        instance = ResolvedInstance::of(config, user.places());
        process.emplace(
            ChildProcess::Setup{.executable = "/bin/sh",
                                .arguments = {"-c", script},
                                .environment = Environment{{"PATH", "/usr/bin:/bin"},
                                                           {"REPORT", report.path()},
                                                           {"SILENCE", silence.path()}}});
        process->launch();
        delegate.emplace(instance, places, StatusIconFiles{}, *process, desktop);
        delegate->applicationDidFinishLaunching();
        CHECK_FALSE(desktop.fakeStatusArea.shown);
        desktop.fakeLoop.letTimePass();
    }
    Stage(const Stage&) = delete;
    Stage& operator=(const Stage&) = delete;
    ~Stage() {
        process->sendSignal(SIGKILL);
        process->waitUntilExit();
    }

    TempDir tmp;
    UserHome user;
    UserPlaces places = user.places();
    Fifo report{tmp / "report"};
    Fifo silence{tmp / "silence"}; ///< nobody writes into it
    ResolvedInstance instance;
    FakeDesktop desktop;
    std::optional<ChildProcess> process;
    std::optional<MenuBarDelegate> delegate;
};

} // namespace

TEST_CASE("Show brings the windows of the program and of what it started to the front") {
    Stage stage("exec 3>\"$REPORT\"; sh -c 'echo $$ >&3; read x <\"$SILENCE\"' & wait");
    const int child = std::stoi(stage.report.line());

    stage.desktop.fakeStatusArea.choose("Show Work");

    REQUIRE(stage.desktop.fakeWindows.broughtToFront.size() == 1);
    const auto& processes = stage.desktop.fakeWindows.broughtToFront.front();
    CHECK(processes.contains(stage.process->processIdentifier()));
    CHECK(processes.contains(child));
    CHECK_FALSE(processes.contains(::getpid()));
    ::kill(child, SIGKILL);
}

TEST_CASE("Show does nothing once the program has ended") {
    Stage stage("exit 0");
    stage.process->waitUntilExit();

    stage.desktop.fakeStatusArea.choose("Show Work");

    CHECK(stage.desktop.fakeWindows.broughtToFront.empty());
}

TEST_CASE("Quit asks the program to end, each time, and waits for what it says") {
    Stage stage("exec " + quoted(KORVANE_TEST_PROBE) + " signals \"$REPORT\" " +
                std::to_string(SIGHUP));
    REQUIRE(stage.report.line() == "ready");

    for (int i = 0; i < 3; ++i) {
        stage.desktop.fakeStatusArea.choose("Quit Work");
        CHECK(stage.report.line() == "15 user");
    }

    CHECK(stage.process->isRunning());
    CHECK_FALSE(stage.desktop.fakeLoop.status);
    CHECK(stage.desktop.fakeStatusArea.shown);
}

TEST_CASE("Quit ends a program that does not mind, and no other once that has ended") {
    Stage stage("exec sleep 1000");

    stage.desktop.fakeStatusArea.choose("Quit Work");
    stage.process->waitUntilExit();
    CHECK(stage.process->terminationStatus() == SIGTERM);
    stage.desktop.fakeStatusArea.choose("Quit Work");

    CHECK_FALSE(stage.desktop.fakeLoop.status);
}
