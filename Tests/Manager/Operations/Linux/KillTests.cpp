#include "Manager/Desktop/Registration.h"
#include "Manager/Files/StagingFolder.h"
#include "Manager/Operations/Deletion.h"
#include "Manager/Operations/Editing.h"
#include "Manager/Operations/Scene.h"
#include "Support/Faults.h"

#include <sys/wait.h>
#include <unistd.h>

namespace korvane::test {

using ambrel::UserData;

namespace {

Strings hiddenIn(const Path& folder) {
    auto names = namesIn(folder);
    std::erase_if(names, [](const std::string& name) { return !name.starts_with('.'); });
    return names;
}

/// Runs `act` in a child that is killed in place of its call number `last` about the scene's files.
/// False when the child came to its end, because it makes fewer calls.
template <class Act> bool killedAt(long last, const Scene& scene, const Act& act) {
    const pid_t child = ::fork();
    if (child == 0) {
        faults::armKill(last, scene.tmp.path());
        act();
        ::_exit(0);
    }
    int status = 0;
    REQUIRE(::waitpid(child, &status, 0) == child);
    if (WIFEXITED(status)) CHECK(WEXITSTATUS(status) == 0);
    return WIFSIGNALED(status);
}

/// Lets `act` be killed at every call of so many as `step` says, because each is a new Scene and a
/// new process, each time on a new Scene that `prepare` filled, and `check` look at what is left.
template <class Prepare, class Act, class Check>
void killEverywhere(const Prepare& prepare, const Act& act, const Check& check, long step = 3) {
    long last = 1;
    for (bool killed = true; killed; last += step) {
        const Scene scene;
        prepare(scene);
        killed = killedAt(last, scene, [&] { act(scene); });
        CAPTURE(last);
        CAPTURE(hiddenIn(scene.home / "Applications"));
        check(scene);
    }
    CHECK(last > 20); // the wrapped calls are the ones that are made
}

void deleteWork(const Scene& scene) {
    const auto record = ambrel::InstanceRegistry(scene.user).recordFor(scene.bundle());
    if (!record) return;
    perform(planDeletion(*record, UserData::remove, scene.user), scene.user);
}

} // namespace

TEST_CASE("wherever making an instance is killed, it is whole or not there, and the next command "
          "removes the rest") {
    killEverywhere([](const Scene& scene) { makeFolder(scene.home / "Applications"); },
                   [](const Scene& scene) { scene.make(scene.appRequest()); },
                   [](const Scene& scene) {
                       const auto made =
                           ambrel::InstanceRegistry(scene.user).recordFor(scene.bundle());
                       CHECK(isThere(scene.bundle()) == made.has_value());

                       scene.instance("Other");

                       CHECK(hiddenIn(scene.home / "Applications").empty());
                   });
}

TEST_CASE("wherever deleting with data is killed, doing it again comes to the end") {
    killEverywhere(
        [](const Scene& scene) {
            scene.instance();
            writeFile(scene.homeOf() + "/folder/data", "mine");
        },
        deleteWork,
        [](const Scene& scene) {
            if (isThere(scene.homeOf())) CHECK(isThere(scene.bundle()));

            deleteWork(scene);
            const auto other = scene.instance("Other");

            CHECK_FALSE(isThere(scene.bundle()));
            CHECK_FALSE(isThere(scene.homeOf()));
            CHECK(hiddenIn(scene.home / "Applications").empty());
            CHECK(namesIn(scene.user.data + "/applications").size() == 1);
            CHECK(registration::findEntry(other, scene.user));
        });
}

TEST_CASE("wherever replacing an instance is killed, one of both is there, and what was not looked "
          "at yet is removed by nobody") {
    killEverywhere([](const Scene& scene) { scene.instance(); },
                   [](const Scene& scene) {
                       auto request = scene.request();
                       request.existing = Existing::replace;
                       scene.make(request);
                   },
                   [](const Scene& scene) {
                       CHECK(ambrel::InstanceRegistry(scene.user).recordFor(scene.bundle()));

                       scene.instance("Other");

                       for (const auto& name : hiddenIn(scene.home / "Applications")) {
                           const auto left = namesIn(scene.home / ("Applications/" + name));
                           CHECK(left == Strings{"Work.app"});
                       }
                   });
}

TEST_CASE(
    "wherever renaming an instance is killed, it is there under one of both names, and at most "
    "one whole bundle is left that was not looked at") {
    killEverywhere([](const Scene& scene) { scene.instance(); },
                   [](const Scene& scene) {
                       const auto record =
                           ambrel::InstanceRegistry(scene.user).recordFor(scene.bundle());
                       auto wanted = record->config;
                       wanted.displayName = "Office";
                       change(*record, wanted, scene.user, {});
                   },
                   [](const Scene& scene) {
                       const auto bundle =
                           scene.bundle(isThere(scene.bundle()) ? "Work" : "Office");
                       CHECK(ambrel::InstanceRegistry(scene.user).recordFor(bundle));

                       scene.instance("Other");

                       for (const auto& name : hiddenIn(scene.home / "Applications")) {
                           const auto left = scene.home / ("Applications/" + name + "/Office.app");
                           CHECK(isThere(left + "/Contents/MacOS/runner"));
                           CHECK(isThere(left + "/Contents/Info.plist"));
                       }
                   },
                   17); // most of the many calls are of drawing the icon
}

} // namespace korvane::test
