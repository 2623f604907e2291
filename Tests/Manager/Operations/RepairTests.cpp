#include "Manager/Operations/Repair.h"

#include "Manager/Files/StagingFolder.h"
#include "Manager/Operations/Registering.h"
#include "Scene.h"

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

namespace korvane::test {

using Kind = Difference::Kind;

namespace {

RepairPlan planFor(const Scene& scene, const std::optional<ambrel::InstanceRecord>& only = {}) {
    const auto before = scene.everything();
    auto plan = planRepair(only, scene.runner, scene.user, scene.environment);
    CHECK(scene.everything() == before);
    for (const auto& difference : plan.differences) CHECK(isOneLine(difference.sentence));
    return plan;
}

Path runnerOf(const ambrel::InstanceRecord& record) {
    return record.bundleURL + "/Contents/MacOS/runner";
}

} // namespace

TEST_CASE("what differs is found first and then mended") {
    const Scene scene;
    const auto record = scene.instance();
    CHECK(planFor(scene).differences.empty());
    const auto complete = scene.everything();
    REQUIRE(::unlink(runnerOf(record).c_str()) == 0);

    const auto plan = planFor(scene, record);
    REQUIRE(plan.differences.size() == 1);
    const auto& difference = plan.differences.front();
    CHECK(difference.kind == Kind::runnerMissing);
    CHECK(difference.record == record);
    CHECK(difference.subject == runnerOf(record));
    CHECK(difference.isMendable());
    const auto repaired = perform(plan, scene.user);

    CHECK(repaired.mended.size() == 1);
    CHECK(repaired.failures.empty());
    CHECK(scene.everything() == complete);
}

TEST_CASE("a repair of one instance leaves another's faults alone") {
    const Scene scene;
    const auto record = scene.instance();
    const auto other = scene.instance("Other");
    REQUIRE(::unlink(runnerOf(record).c_str()) == 0);
    REQUIRE(::unlink(runnerOf(other).c_str()) == 0);

    perform(planFor(scene, record), scene.user);

    CHECK(isThere(runnerOf(record)));
    CHECK_FALSE(isThere(runnerOf(other)));
    CHECK(planFor(scene).differences.size() == 1);
}

TEST_CASE("an instance elsewhere that was taken off the desktop is looked at too") {
    const Scene scene;
    auto request = scene.request();
    request.outputFolder = scene.tmp / "elsewhere";
    const auto record = scene.make(request).record;
    unregisterInstance(record, scene.user);
    REQUIRE(::unlink(runnerOf(record).c_str()) == 0);

    const auto plan = planFor(scene);

    REQUIRE(plan.differences.size() == 2);
    CHECK(plan.differences[0].kind == Kind::runnerMissing);
    CHECK(plan.differences[0].record == record);
    CHECK(plan.differences[1].kind == Kind::entryMissing);
}

TEST_CASE("a repair removes what a killed command left hidden") {
    const Scene scene;
    scene.instance();
    const auto before = scene.everything();
    const pid_t child = ::fork();
    if (child == 0) {
        const StagingFolder staging(scene.home / "Applications");
        ::raise(SIGKILL);
    }
    int status = 0;
    REQUIRE(::waitpid(child, &status, 0) == child);
    REQUIRE(namesIn(scene.home / "Applications").size() == 2);

    const auto repaired = perform(planFor(scene), scene.user);

    CHECK(repaired.mended.empty());
    CHECK(scene.everything() == before);
}

TEST_CASE("an instance that has changed since the plan was made is not repaired") {
    const Scene scene;
    const auto record = scene.instance();
    REQUIRE(::unlink(runnerOf(record).c_str()) == 0);
    const auto plan = planFor(scene);
    auto config = record.config;
    config.bundleId = "org.example.changed";
    scene.store(record, config);
    const auto before = scene.everything();

    const auto repaired = perform(plan, scene.user);

    REQUIRE(repaired.failures.size() == 1);
    CHECK(contains(repaired.failures.front().reason, "has changed since"));
    CHECK(repaired.mended.empty());
    CHECK(scene.everything() == before);
}

TEST_CASE("an entry that found its bundle again since the plan was made is not removed") {
    const Scene scene;
    const auto record = scene.instance();
    const auto aside = scene.tmp / "aside.app";
    REQUIRE(::rename(record.bundleURL.c_str(), aside.c_str()) == 0);
    const auto plan = planFor(scene);
    REQUIRE(plan.differences.size() == 1);
    CHECK(plan.differences.front().kind == Kind::entryOrphaned);
    REQUIRE(::rename(aside.c_str(), record.bundleURL.c_str()) == 0);
    const auto before = scene.everything();

    const auto repaired = perform(plan, scene.user);

    CHECK(repaired.failures.size() == 1);
    CHECK(scene.everything() == before);
}

TEST_CASE("without a place for entries only the bundles are repaired") {
    Scene scene;
    const auto record = scene.instance();
    REQUIRE(::unlink(runnerOf(record).c_str()) == 0);
    scene.user.data = "";

    const auto plan = planFor(scene);

    REQUIRE(plan.differences.size() == 1);
    CHECK(perform(plan, scene.user).mended.size() == 1);
}

TEST_CASE("a runner that cannot be run is refused") {
    const Scene scene;
    for (const auto& runner : {scene.tmp / "nothing", writeFile(scene.tmp / "plain")}) {
        const auto refusal =
            refusalOf(scene, [&] { planRepair({}, runner, scene.user, scene.environment); });
        CHECK(refusal.kind == Refusal::Kind::unusableRunner);
        CHECK(refusal.subject == runner);
    }
}

} // namespace korvane::test
