#include "Manager/Operations/RunningScene.h"

namespace korvane::test {

TEST_CASE("what is locked in by namespaces of its own runs as part of what has started it") {
    const RunningScene scene;
    const auto ready = makeFifo(scene.tmp / "ready");
    const auto go = makeFifo(scene.tmp / "go");
    // Neither the log nor a home tells whose it is; and an engine locks in its pages like this.
    const auto record =
        scene.made("Work", "exec unshare -r --pid --fork sh -c \"echo >" + quoted(ready) +
                               "; read x <" + quoted(go) + "\" >/dev/null 2>&1");
    RunningProgram program(scene.runnerOf(record));
    readFile(ready);

    const auto found = Running::now(scene.user).of(record);

    CHECK(found.ids.size() == 3); // the runner, what has made the namespaces, and what is in them
    CHECK(found.heads.size() == 1);
    writeFile(go, "x\n");
    CHECK(program.wait().status == 0);
    CHECK(scene.runs(record).empty());
}

} // namespace korvane::test
