#include "korvane-runner/Web/WebHost.h"

#include "Ambrel/Platform/SoleProcess.h"
#include "Support/Builders.h"
#include "Support/Environment.h"
#include "Support/Expect.h"
#include "korvane-runner/Web/FakeWebDesktop.h"

#include <csignal>
#include <cstdlib>
#include <fstream>
#include <sys/wait.h>
#include <unistd.h>

using namespace ambrel;
using namespace korvane::runner;
using namespace korvane::test;

namespace {

/// What the loop does that the host runs: it serves whatever is to be read, and ends.
void serve(FakeLoop& loop) {
    const auto watched = loop.watched;
    for (const auto& [descriptor, callback] : watched) callback();
}

/// A user with a web instance whose home is in the user's.
struct Stage {
    Stage() : user(tmp) {
        config.displayName = "Mail";
        config.bundleId = "app.korvane.instance.mail";
        config.kind = ShortcutKind::web;
        config.instanceHome = "~/Instances/Mail";
        config.url = "mail.example.org";
    }

    using Scene = std::function<void(FakeWebDesktop&)>;

    /// Runs the host in a process of its own, as it runs in a runner, with `scene` for what happens
    /// while there is a window. Returns the process's status.
    int host(
        const Scene& scene, const std::function<void()>& early = [] {}) const {
        const auto pid = ::fork();
        REQUIRE(pid >= 0);
        if (pid == 0) ::_exit(hostHere(scene, early));
        int status = 0;
        REQUIRE(::waitpid(pid, &status, 0) == pid);
        REQUIRE(WIFEXITED(status));
        return WEXITSTATUS(status);
    }

    int hostHere(const Scene& scene, const std::function<void()>& early) const {
        try {
            const SignalHold hold;
            early();
            const auto places = UserPlaces::ofThisProcess();
            const WebSurroundings surroundings{places, processEnvironment(), tmp / "none.icns"};
            return WebHost::run(
                ResolvedInstance::of(config, places), surroundings, hold,
                [&](const DesktopIdentity& identity) { return openDesktop(identity, scene); });
        } catch (const std::exception& error) {
            note(error.what());
            return 99;
        }
    }

    std::unique_ptr<WebDesktop> openDesktop(const DesktopIdentity& identity,
                                            const Scene& scene) const {
        if (refusal) throw DesktopError(*refusal);
        note("opens as " + identity.id + " " + identity.name + " " + identity.icon);
        auto desktop = std::make_unique<FakeWebDesktop>();
        desktop->fakeLoop.whenRun = [raw = desktop.get(), scene] { scene(*raw); };
        return desktop;
    }

    void note(const std::string& line) const {
        std::ofstream(tmp / "notes", std::ios::app) << line << '\n';
    }
    std::string notes() const { return isThere(tmp / "notes") ? readFile(tmp / "notes") : ""; }

    TempDir tmp;
    OwnUserHome user;
    InstanceConfig config;
    Path home = user / "Instances/Mail";
    std::optional<std::string> refusal;
};

std::string variable(const char* name) {
    const char* value = std::getenv(name);
    return value == nullptr ? "unset" : value;
}

} // namespace

TEST_CASE("a home with a tilde is the user's, before and after the process's own home has moved") {
    Stage stage;

    const int status = stage.host([&](FakeWebDesktop& desktop) {
        for (const char* name : {"HOME", "CFFIXED_USER_HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME",
                                 "XDG_STATE_HOME", "XDG_CACHE_HOME"}) {
            stage.note(std::string(name) + " " + variable(name));
        }
        stage.note("data " + desktop.window.setup->data);
        stage.note("download " + desktop.events->placeForDownload("a.txt"));
        desktop.events->messageArrived(message("badge", {{"count", 3}}));
        desktop.events->closed();
    });

    CHECK(status == 0);
    const auto& home = stage.home;
    CHECK(stage.notes() ==
          "opens as app.korvane.instance.mail Mail \n"
          "HOME " +
              home + "\nCFFIXED_USER_HOME " + home + "\nXDG_CONFIG_HOME " + home +
              "/.config\nXDG_DATA_HOME " + home + "/.local/share\nXDG_STATE_HOME " + home +
              "/.local/state\nXDG_CACHE_HOME " + home + "/.cache\ndata " + home +
              "/.local/share/web/data\ndownload " + (stage.user / "Downloads/a.txt") + "\n");
    CHECK(readFile(home + "/korvane-instance.log") == "badge: 3\n");
    CHECK(isThere(home + "/KorvaneWeb-app.korvane.instance.mail"));
    CHECK(namesIn(home) == Strings{".cache", ".local", "KorvaneWeb-app.korvane.instance.mail",
                                   "korvane-instance.log"});
    CHECK(modeOf(home) == 0700);
    CHECK(modeOf(home + "/.local/share/web") == 0700);
}

TEST_CASE("a signal that asks for the end closes the window, with everything written") {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        Stage stage;
        CAPTURE(signal);
        const int status = stage.host([&](FakeWebDesktop& desktop) {
            desktop.events->messageArrived(message("notify", {{"title", "last"}}));
            ::raise(signal);
            serve(desktop.fakeLoop);
            stage.note("flushed " + std::to_string(desktop.flushed));
        });
        CHECK(status == 0);
        CHECK(contains(stage.notes(), "flushed 1"));
        CHECK(readFile(stage.home + "/korvane-instance.log") == "notify: last — \n");
        CHECK(isThere(stage.home + "/KorvaneWeb-app.korvane.instance.mail"));
    }
}

TEST_CASE("a signal that comes before there is a window ends the instance as well") {
    Stage stage;
    const int status = stage.host([&](FakeWebDesktop& desktop) { serve(desktop.fakeLoop); },
                                  [] { ::raise(SIGTERM); });
    CHECK(status == 0);
}

TEST_CASE("a site is shown without a home, too") {
    Stage stage;
    writeFile(stage.user / "Instances");

    const int status = stage.host([&](FakeWebDesktop& desktop) {
        stage.note(variable("HOME"));
        stage.note("kept in [" + desktop.window.setup->data + desktop.window.setup->cache + "]");
        desktop.events->messageArrived(message("badge", {{"count", 3}}));
        desktop.events->closed();
    });

    CHECK(status == 0);
    CHECK(contains(stage.notes(), stage.home + "\nkept in []\n"));
    CHECK(readFile(stage.user / "Instances").empty());
}

TEST_CASE("an instance without a home is refused, for its data would lie wherever it is started") {
    Stage stage;
    stage.config.instanceHome = "";
    CHECK(stage.host([](FakeWebDesktop&) {}) == 99);
    CHECK(stage.notes() == "App not clonable: web shortcut has no home folder\n");
}

TEST_CASE("the reason why there can be no window is handed on") {
    Stage stage;
    stage.refusal = "there is no display";
    CHECK(stage.host([](FakeWebDesktop&) {}) == 99);
    CHECK(stage.notes() == "there is no display\n");
}

TEST_CASE("a second start of an instance brings the window of the first to the front") {
    Stage stage;

    const int status = stage.host([&](FakeWebDesktop& desktop) {
        const auto before = desktop.window.presented;
        const auto pid = ::fork();
        if (pid == 0) {
            ::setenv("CFFIXED_USER_HOME", stage.user.path().c_str(), 1); // as a person starts it
            ::_exit(stage.hostHere([](FakeWebDesktop&) {}, [] {}));
        }
        int second = -1;
        ::waitpid(pid, &second, 0);
        serve(desktop.fakeLoop);
        stage.note("second " + std::to_string(second) + ", presented " +
                   std::to_string(desktop.window.presented - before));
        desktop.events->closed();
    });

    CHECK(status == 0);
    CHECK(stage.notes() == "opens as app.korvane.instance.mail Mail \nsecond 0, presented 1\n");
}
