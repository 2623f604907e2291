#include "Manager/Operations/Leftovers.h"

#include "Ambrel/Home/HomesElsewhere.h"
#include "Manager/Operations/Deletion.h"
#include "Manager/Operations/Registering.h"
#include "RunningScene.h"
#include "Support/Programs.h"

#include <unistd.h>

namespace korvane::test {

using Kind = Refusal::Kind;

namespace {

Strings leftIn(const Scene& scene) {
    Strings homes;
    for (const auto& leftover : findLeftovers(scene.user, Measure::no)) {
        homes.push_back(leftover.home);
    }
    return homes;
}

Kind kindOfRefusal(const Scene& scene, const std::string& home) {
    return refusalOf(scene, [&] { requireLeftover(home, scene.user, Measure::no); }).kind;
}

} // namespace

TEST_CASE("the home of a deleted instance is left over, and that of an instance is not") {
    const Scene scene;
    const auto record = scene.instance();
    scene.instance("Other");
    writeFile(scene.homeOf() + "/letter", "dear");
    CHECK(leftIn(scene).empty());

    perform(planDeletion(record, ambrel::UserData::keep, scene.user), scene.user);

    const auto found = findLeftovers(scene.user, Measure::yes);
    REQUIRE(found.size() == 1);
    CHECK(found[0].home == scene.homeOf());
    CHECK(found[0].size.bytes >= 4);
    CHECK(found[0].lastUsed.has_value());
    CHECK(requireLeftover("Work", scene.user, Measure::no).home == scene.homeOf());

    removeLeftover(found[0], scene.user);

    CHECK_FALSE(isThere(scene.homeOf()));
    CHECK(isThere(scene.homeOf("Other")));
    CHECK(leftIn(scene).empty());
}

TEST_CASE("the home of an instance elsewhere that has an entry is not left over") {
    const Scene scene;
    auto request = scene.request();
    request.outputFolder = scene.tmp / "out";
    const auto record = scene.make(request).record;
    REQUIRE(record.bundleURL == scene.tmp / "out/Work.app");

    CHECK(leftIn(scene).empty());
    CHECK(kindOfRefusal(scene, "Work") == Kind::homeIsShared);
}

TEST_CASE(
    "a home is not left over while its bundle may be on a disk that is not there or damaged") {
    const Scene scene;
    auto request = scene.request();
    request.outputFolder = scene.tmp / "disk";
    scene.make(request);
    ambrel::fileSystem::move(scene.tmp / "disk", scene.tmp / "unplugged");
    const auto damaged = scene.instance("Damaged");
    writeFile(damaged.bundleURL + "/Contents/Resources/instance.json", "{");

    CHECK(leftIn(scene).empty());
    CHECK(kindOfRefusal(scene, "Work") == Kind::homeIsShared);
    CHECK(kindOfRefusal(scene, "Damaged") == Kind::homeIsShared);
}

TEST_CASE("a home elsewhere is left over once its bundle was thrown away") {
    const Scene scene;
    auto request = scene.request();
    request.home = scene.tmp / "far/Work";
    auto other = scene.request("Other");
    other.home = scene.tmp / "far/Other";
    const auto record = scene.make(request).record;
    scene.make(other);
    ambrel::fileSystem::removeTree(record.bundleURL);
    CHECK(leftIn(scene).empty()); // its entry still stands for it
    ambrel::fileSystem::removeTree(scene.user.data + "/applications");

    REQUIRE(leftIn(scene) == Strings{*request.home});
    removeLeftover(requireLeftover(*request.home, scene.user, Measure::no), scene.user);

    CHECK_FALSE(isThere(*request.home));
    CHECK(isThere(*other.home));
    for (const auto& home : ambrel::homesElsewhere::all(scene.user)) CHECK(home != *request.home);
}

TEST_CASE("no other folder is taken for a home that was left behind") {
    const Scene scene;
    const auto own = scene.instance("Own");
    writeFile(scene.home / "Documents/letter", "dear");
    writeFile(scene.home / "elsewhere/letter", "dear");
    makeFolder(scene.home / "KorvaneInstances/Real/inner");
    writeFile(scene.home / "KorvaneInstances/file", "no folder");
    makeLink(scene.home / "KorvaneInstances/Link", scene.home / "Documents");
    makeLink(scene.tmp / "way", scene.home / "KorvaneInstances/Real");

    CHECK(leftIn(scene) == Strings{scene.homeOf("Real")});
    for (const std::string other :
         {"Link", "file", "missing", "..", ".", "~", "~/Documents", "~/elsewhere", "/",
          "~/KorvaneInstances", "~/KorvaneInstances/Real/inner", "~/KorvaneInstances/.."}) {
        CAPTURE(other);
        CHECK(kindOfRefusal(scene, other) == Kind::unknownHome);
    }
    CHECK(kindOfRefusal(scene, scene.tmp / "way") == Kind::unknownHome);
    CHECK(kindOfRefusal(scene, "Own") == Kind::homeIsShared);
}

TEST_CASE("a home in which the user's own folder or an instance's home lies is not left over") {
    const Scene scene;
    makeFolder(scene.homeOf("Mine") + "/papers");
    writeFile(scene.home / ".config/user-dirs.dirs",
              "XDG_DOCUMENTS_DIR=\"" + scene.homeOf("Mine") + "/papers\"\n");
    auto request = scene.request();
    request.home = scene.homeOf("Outer") + "/inner";
    scene.make(request);

    CHECK(leftIn(scene).empty());
    CHECK(kindOfRefusal(scene, "Mine") == Kind::homeIsUsers);
    CHECK(kindOfRefusal(scene, "Outer") == Kind::homeIsShared);
}

TEST_CASE("a home that got an instance since it was looked at is not removed") {
    const Scene scene;
    makeFolder(scene.homeOf());
    const auto leftover = requireLeftover("Work", scene.user, Measure::no);
    scene.instance();

    const auto refusal = refusalOf(scene, [&] { removeLeftover(leftover, scene.user); });

    CHECK(refusal.kind == Kind::homeIsShared);
}

TEST_CASE("the home that an entry names is not left over while the bundle cannot be read") {
    const Scene scene;
    auto request = scene.request("Renamed");
    request.home = scene.homeOf();
    scene.make(request);
    ambrel::fileSystem::move(scene.home / "Applications", scene.tmp / "unmounted");

    CHECK(leftIn(scene).empty());
    CHECK(kindOfRefusal(scene, "Work") == Kind::homeIsShared);
    makeLink(scene.tmp / "way", scene.home / "KorvaneInstances");
    CHECK(kindOfRefusal(scene, scene.tmp / "way/Work") == Kind::homeIsShared);
}

TEST_CASE("nothing is told to be left over while instances or entries cannot be listed") {
    for (const std::string folder : {"Applications", ".local/share/applications"}) {
        CAPTURE(folder);
        const Scene scene;
        makeFolder(scene.homeOf());
        REQUIRE(leftIn(scene) == Strings{scene.homeOf()});
        if (isThere(scene.home / folder)) ambrel::fileSystem::removeTree(scene.home / folder);
        writeFile(scene.home / folder, "no folder");

        CHECK_THROWS_AS(leftIn(scene), ambrel::FileError);
        CHECK_THROWS_AS(requireLeftover("Work", scene.user, Measure::no), ambrel::FileError);
    }
}

TEST_CASE("a home is not left over while something of a bundle that is gone runs in it") {
    const Started scene;
    ambrel::fileSystem::removeTree(scene.record.bundleURL);
    ambrel::fileSystem::removeTree(scene.user.data + "/applications");

    CHECK(leftIn(scene).empty());
    const auto refusal =
        expectThrow<Refusal>([&] { requireLeftover(scene.homeOf(), scene.user, Measure::no); });
    CHECK(refusal.kind == Kind::instanceRuns);
    CHECK(refusal.subject == scene.homeOf());
    CHECK(contains(refusal.sentence(), std::to_string(scene.command)));
}

TEST_CASE("a home elsewhere whose instance was deleted without its data is left over") {
    const Scene scene;
    auto request = scene.request();
    request.home = scene.tmp / "far/Work";
    const auto record = scene.make(request).record;
    perform(planDeletion(record, ambrel::UserData::keep, scene.user), scene.user);

    REQUIRE(leftIn(scene) == Strings{*request.home});
    removeLeftover(requireLeftover(*request.home, scene.user, Measure::no), scene.user);

    CHECK_FALSE(isThere(*request.home));
    CHECK(ambrel::homesElsewhere::all(scene.user).empty());
}

TEST_CASE("the home of an instance elsewhere that was unregistered is not left over") {
    const Scene scene;
    auto request = scene.request("Renamed");
    request.outputFolder = scene.tmp / "disk";
    request.home = scene.homeOf();
    const auto record = scene.make(request).record;
    unregisterInstance(record, scene.user);

    CHECK(leftIn(scene).empty());
    CHECK(kindOfRefusal(scene, "Work") == Kind::homeIsShared);
    ambrel::fileSystem::move(scene.tmp / "disk", scene.tmp / "unplugged");
    CHECK(leftIn(scene).empty());
    CHECK(kindOfRefusal(scene, "Work") == Kind::homeIsShared);
    ambrel::fileSystem::move(scene.tmp / "unplugged", scene.tmp / "disk");

    perform(planDeletion(record, ambrel::UserData::keep, scene.user), scene.user);

    CHECK(leftIn(scene) == Strings{scene.homeOf()});
}

} // namespace korvane::test
