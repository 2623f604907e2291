#include "Manager/Operations/Stopping.h"

#include "Manager/Operations/RunningScene.h"

namespace korvane::test {

using Kind = Refusal::Kind;

TEST_CASE("what does not run is not stopped") {
    const RunningScene scene;
    const auto work = scene.made();

    CHECK(stop(work, scene.user) == Stopped::wasNotRunning);
}

TEST_CASE("stopping asks the runner, which hands that on, and leaves other instances alone") {
    Started scene;
    const auto other = scene.made("Other");
    const Waiting others({{"HOME", scene.homeOf("Other")}});

    CHECK(stop(scene.record, scene.user) == Stopped::ended);

    CHECK(scene.program.wait().status == SIGTERM); // the program's, handed on by the runner
    CHECK(scene.runs(scene.record).empty());
    CHECK(scene.runs(other) == Ids{others.id()});
}

TEST_CASE("what no runner is above is asked itself") {
    const RunningScene scene;
    const auto work = scene.made();
    Waiting process({{"HOME", scene.homeOf()}});

    CHECK(stop(work, scene.user) == Stopped::ended);

    CHECK(process.wait().signal == SIGTERM);
}

TEST_CASE("what a program leaves behind when it is ended is asked too") {
    const RunningScene scene;
    const auto ready = makeFifo(scene.tmp / "ready");
    const auto go = makeFifo(scene.tmp / "go");
    const auto child = "echo $$ >" + ready + "; read x <" + go;
    const auto work = scene.made("Work", "sh -c '" + child + "' & wait");
    RunningProgram program(scene.runnerOf(work));
    readFile(ready);

    CHECK(stop(work, scene.user) == Stopped::ended);

    program.wait();
    CHECK(scene.runs(work).empty());
}

TEST_CASE("what does not end is told, and nothing harder is done to it") {
    const RunningScene scene;
    const auto work = scene.made();
    Waiting deaf({{"HOME", scene.homeOf()}}, "trap '' TERM");

    const auto refusal =
        expectThrow<Refusal>([&] { stop(work, scene.user, std::chrono::milliseconds(1)); });

    CHECK(refusal.kind == Kind::notStopped);
    CHECK(refusal.subject == "Work");
    CHECK(
        contains(refusal.sentence(), "still running: process " + std::to_string(deaf.id()) + " ("));
    CHECK(scene.runs(work) == Ids{deaf.id()});
    CHECK(deaf.letGo().status == 0);
}

} // namespace korvane::test
