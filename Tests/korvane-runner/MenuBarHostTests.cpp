#include "korvane-runner/MenuBarHost.h"

#include "Ambrel/Platform/ChildProcess.h"

#include "Support/Builders.h"
#include "Support/Environment.h"
#include "Support/Expect.h"
#include "Support/Programs.h"
#include "korvane-runner/Desktop/FakeDesktop.h"
#include "korvane-runner/Signals.h"
#include "korvane-runner/WaitingHost.h"

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

using namespace ambrel;
using namespace korvane::runner;
using namespace korvane::test;

namespace {

constexpr int refused = 77;
constexpr int failed = 78;

/// An instance with a status item whose program is a shell with `script`.
struct Stage {
    explicit Stage(std::string theScript) : script(std::move(theScript)), user(tmp) {}

    using Scene = std::function<void(FakeDesktop&, ChildProcess&)>;

    /// Runs the host in a process of its own, as a runner does, and returns that one's status.
    int host(const Scene& scene) const {
        const auto pid = ::fork();
        REQUIRE(pid >= 0);
        if (pid == 0) ::_exit(hostAndReturn(scene));
        int status = 0;
        REQUIRE(::waitpid(pid, &status, 0) == pid);
        REQUIRE(WIFEXITED(status));
        return WEXITSTATUS(status);
    }

    /// Whatever happens: the process must not go on with other tests.
    int hostAndReturn(const Scene& scene) const noexcept {
        try {
            return hostHere(scene);
        } catch (...) {
            return failed;
        }
    }

    int hostHere(const Scene& scene) const {
        const SignalHold hold;
        const auto places = user.places();
        auto config = commandConfig(tmp / "home", "/bin/sh");
        config.displayName = "Work";
        ChildProcess process({.executable = "/bin/sh", .arguments = {"-c", script}});
        process.launch();
        if (before) before(process);
        try {
            return MenuBarHost::run(ResolvedInstance::of(config, places), places, {}, process, hold,
                                    [&] { return openDesktop(scene, process); });
        } catch (const DesktopError&) {
            return afterRefusal ? afterRefusal(process, hold) : refused;
        }
    }

    std::unique_ptr<Desktop> openDesktop(const Scene& scene, ChildProcess& process) const {
        if (beforeRefusal) beforeRefusal();
        if (isRefused) throw DesktopError("there is none");
        auto desktop = std::make_unique<FakeDesktop>();
        desktop->whenFlushed = whenFlushed;
        desktop->fakeLoop.whenRun = [raw = desktop.get(), scene, &process] {
            scene(*raw, process);
            raw->fakeLoop.serveUntilEnd();
        };
        return desktop;
    }

    std::string script;
    TempDir tmp;
    UserHome user;
    bool isRefused = false;
    std::function<void()> beforeRefusal;
    std::function<void(ChildProcess&)> before;
    std::function<int(ChildProcess&, const SignalHold&)> afterRefusal;
    std::function<void(bool hasItem)> whenFlushed;
};

void watch(FakeDesktop&, ChildProcess&) {}

} // namespace

TEST_CASE("the host ends when the program does, with its status") {
    for (const int status : {0, 7, 255}) {
        CHECK(Stage("exit " + std::to_string(status)).host(watch) == status);
    }
    CHECK(Stage("kill -KILL $$").host(watch) == SIGKILL);
}

TEST_CASE("a program that has ended already has no item, and its status is the host's") {
    Stage stage("exit 8");
    stage.isRefused = true; // asking for a desktop would show
    stage.before = [](ChildProcess& process) { process.waitUntilExit(); };

    CHECK(stage.host(watch) == 8);
}

TEST_CASE("quitting from the menu ends the program, and then the host with its status") {
    const Stage untroubled("exec sleep 1000");
    CHECK(untroubled.host([](FakeDesktop& desktop, ChildProcess&) {
        desktop.fakeLoop.letTimePass();
        desktop.fakeStatusArea.choose("Quit Work");
    }) == SIGTERM);

    const TempDir tmp;
    Fifo report(tmp / "report");
    const Stage saving("exec " + quoted(KORVANE_TEST_PROBE) + " signals " + quoted(report.path()) +
                       " " + std::to_string(SIGTERM));
    CHECK(saving.host([&](FakeDesktop& desktop, ChildProcess&) {
        desktop.fakeLoop.letTimePass();
        if (report.line() == "ready") desktop.fakeStatusArea.choose("Quit Work");
    }) == 40);
}

TEST_CASE("what was said to the desktop is sent off before the item goes") {
    const TempDir tmp;
    Stage stage("exec sleep 1000");
    stage.whenFlushed = [&](bool hasItem) {
        writeFile(tmp / "flushed", hasItem ? "item" : "none");
    };

    const int status = stage.host([](FakeDesktop& desktop, ChildProcess& process) {
        desktop.fakeLoop.letTimePass();
        process.sendSignal(SIGKILL);
    });

    CHECK(status == SIGKILL);

    CHECK(readFile(tmp / "flushed") == "item");
}

TEST_CASE("signals that ask the host to end are passed on to the program") {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        CAPTURE(signal);
        const Stage stage("exec sleep 1000");
        CHECK(stage.host([&](FakeDesktop&, ChildProcess&) { ::kill(::getpid(), signal); }) ==
              signal);
    }
}

TEST_CASE("where there can be no item the program runs on and can be waited for") {
    Stage stage("exec sleep 1000");
    stage.isRefused = true;
    stage.afterRefusal = [](ChildProcess& process, const SignalHold& hold) {
        if (!process.isRunning()) return refused;
        ::kill(::getpid(), SIGTERM);
        return WaitingHost::run(process, hold);
    };
    CHECK(stage.host(watch) == SIGTERM);
}

TEST_CASE("a request to end that comes before it shows that there can be no item is not lost") {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        CAPTURE(signal);
        Stage stage("exec sleep 1000");
        stage.isRefused = true;
        stage.beforeRefusal = [signal] { ::kill(::getpid(), signal); };
        stage.afterRefusal = [](ChildProcess& process, const SignalHold& hold) {
            return WaitingHost::run(process, hold);
        };

        CHECK(stage.host(watch) == signal);
    }
}
