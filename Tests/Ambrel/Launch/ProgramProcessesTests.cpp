#include "Ambrel/Launch/ProgramProcesses.h"

#include "Support/Builders.h"
#include "Support/Environment.h"
#include "Support/Expect.h"
#include "Support/Waiting.h"

#include <unistd.h>

namespace korvane::test {

using ambrel::InstanceConfig;
using ambrel::processesOf;
using ambrel::ResolvedInstance;

namespace {

/// A user with an instance whose home is not the user's.
struct Scene {
    Scene() : user(tmp) { makeFolder(home); }

    std::set<int> of(const Waiting& program, const Path& runner = "/none") const {
        return processesOf(program.id(),
                           ResolvedInstance::of(commandConfig(home, "/bin/sh"), user.places()),
                           user.places(), ambrel::FileIdentity::at(runner));
    }

    TempDir tmp;
    UserHome user;
    Path home = tmp / "home";
};

} // namespace

TEST_CASE("to a program belong what descends from it and what it left with the instance's home") {
    Scene scene;
    const auto pids = scene.tmp / "pids";
    const auto ready = makeFifo(scene.tmp / "ready");
    const auto sleeper = [](const Path& pid) {
        return "/bin/sleep 1000 & echo $! >" + quoted(pid) + "; " + untilItIs("/bin/sleep");
    };
    // The first goes on below the program, the second below nobody.
    const Waiting program({{"HOME", scene.home}}, "(" + sleeper(pids) + "; echo >" + quoted(ready) +
                                                      "; wait) & (" + sleeper(pids + "2") +
                                                      "); read x <" + quoted(ready));
    const int below = std::stoi(readFile(pids));
    const int left = std::stoi(readFile(pids + "2"));

    const auto found = scene.of(program);

    CHECK(found.contains(program.id()));
    CHECK(found.contains(below));
    CHECK(found.contains(left));
    CHECK_FALSE(found.contains(::getpid()));
    ::kill(below, SIGKILL);
    ::kill(left, SIGKILL);
}

TEST_CASE("what writes into the instance's log belongs to it, whatever its home and its parent") {
    Scene scene;
    const auto pid = scene.tmp / "pid";
    const auto log = scene.home + "/korvane-instance.log";
    const Waiting program({{"HOME", scene.user.path()}},
                          "(sleep 1000 >" + quoted(log) + " & echo $! >" + quoted(pid) +
                              "; until [ /proc/$!/fd/1 -ef " + quoted(log) + " ]; do :; done)");
    const int left = std::stoi(readFile(pid));

    CHECK(scene.of(program) == std::set{program.id(), left});
    ::kill(left, SIGKILL);
}

TEST_CASE("another program is not the instance's by its home when that is the user's too") {
    Scene scene;
    const Waiting program({{"HOME", scene.user.path()}});
    const Waiting other({{"HOME", scene.user.path()}});
    const Waiting stranger({{"HOME", scene.home}});
    scene.home = scene.user.path();

    CHECK(scene.of(program) == std::set{program.id()});
}

TEST_CASE("what another instance's runner started is not the program's, whatever its home says") {
    Scene scene;
    const auto runner = scene.tmp / "Other.app/Contents/MacOS/runner";
    copyProgram("/bin/sleep", runner);
    writeFile(scene.tmp / "Other.app/Contents/Resources/instance.json", "{}");
    const auto pid = scene.tmp / "pid";
    const Waiting program({{"HOME", scene.home}}, quoted(runner) + " 1000 & echo $! >" +
                                                      quoted(pid) + "; " + untilItIs(runner));
    const int others = std::stoi(readFile(pid));

    CHECK_FALSE(scene.of(program).contains(others));
    CHECK(scene.of(program).contains(program.id()));
    ::kill(others, SIGKILL);
}

TEST_CASE("what another start of the instance has left is the instance's, by its home") {
    const Scene scene;
    const auto runner = scene.tmp / "Work.app/Contents/MacOS/runner";
    copyProgram("/bin/sh", runner);
    writeFile(scene.tmp / "Work.app/Contents/Resources/instance.json", "{}");
    const auto below = [&](const Path& home, const Path& pid) {
        const auto ready = makeFifo(pid + ".ready");
        return "(HOME=" + quoted(home) + " " + quoted(runner) + " -c " +
               quoted("/bin/sleep 1000 & echo $! >" + quoted(pid) + "; " + untilItIs("/bin/sleep") +
                      "; echo >" + quoted(ready) + "; wait") +
               " &); read x <" + quoted(ready) + "; ";
    };
    const auto left = scene.tmp / "left";
    const auto stranger = scene.tmp / "stranger";
    const Waiting program({{"HOME", scene.home}},
                          below(scene.home, left) + below(scene.user.path(), stranger) + "true");
    const int own = std::stoi(readFile(left));
    const int others = std::stoi(readFile(stranger));

    CHECK(scene.of(program, runner).contains(own));
    CHECK_FALSE(scene.of(program).contains(own));
    CHECK_FALSE(scene.of(program, runner).contains(others));
    ::kill(own, SIGKILL);
    ::kill(others, SIGKILL);
}

} // namespace korvane::test
