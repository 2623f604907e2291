#include "Manager/Operations/Deletion.h"

#include "Scene.h"

#include "Ambrel/Home/UserFolders.h"
#include "Manager/Desktop/Registration.h"
#include "Support/Programs.h"
#include "Support/Waiting.h"

#include <unistd.h>

namespace korvane::test {

using ambrel::UserData;
using Kind = Refusal::Kind;

namespace {

struct Deletable : Scene {
    ambrel::InstanceRecord record = instance();
    Path data = writeFile(homeOf() + "/data", "mine");

    ambrel::InstanceRecord at(const Path& configuredHome) const {
        auto config = record.config;
        config.instanceHome = configuredHome;
        return store(record, config);
    }
    Refusal refusedAt(const Path& configuredHome) const {
        const auto moved = at(configuredHome);
        return refusalOf(*this, [&] { planDeletion(moved, UserData::remove, user); });
    }
};

} // namespace

TEST_CASE("a plan of a deletion changes nothing and tells how much would go") {
    const Deletable scene;
    const auto before = scene.everything();

    const auto keeping = planDeletion(scene.record, UserData::keep, scene.user);
    const auto removing = planDeletion(scene.record, UserData::remove, scene.user);

    CHECK(scene.everything() == before);
    CHECK(keeping.bundleSize == sizeOfTree(scene.record.bundleURL));
    CHECK(keeping.bundleSize.items > 5);
    CHECK(keeping.home == scene.homeOf());
    CHECK(keeping.hasData);
    CHECK(keeping.dataSize == TreeSize{});
    CHECK(removing.dataSize == TreeSize{.items = 2, .bytes = 4});
    CHECK_FALSE(removing.isLink);
}

TEST_CASE("a plan that nobody is shown the size of does not look for it") {
    const Scene scene;
    const auto record = scene.instance();
    writeFile(scene.homeOf() + "/letter", "text");

    const auto plan = planDeletion(record, UserData::remove, scene.user, Measure::no);

    CHECK(plan.hasData);
    CHECK(plan.bundleSize == TreeSize());
    CHECK(plan.dataSize == TreeSize());
    perform(plan, scene.user);
    CHECK_FALSE(isThere(scene.homeOf()));
}

TEST_CASE("deleting an instance keeps its data and takes it off the desktop") {
    const Deletable scene;

    const auto deleted =
        perform(planDeletion(scene.record, UserData::keep, scene.user), scene.user);

    CHECK(deleted.record.bundleURL == scene.record.bundleURL);
    CHECK(deleted.keptHome == scene.homeOf());
    CHECK_FALSE(deleted.removedHome);
    CHECK(deleted.notices.empty());
    CHECK_FALSE(isThere(scene.record.bundleURL));
    CHECK_FALSE(registration::findEntry(scene.record, scene.user));
    CHECK(readFile(scene.data) == "mine");
}

TEST_CASE("deleting an instance with its data leaves neither, and follows no link") {
    const Deletable scene;
    const auto letter = writeFile(scene.home / "Documents/letter", "dear");
    makeLink(scene.homeOf() + "/Documents", scene.home / "Documents");

    const auto deleted =
        perform(planDeletion(scene.record, UserData::remove, scene.user), scene.user);

    CHECK(deleted.removedHome == scene.homeOf());
    CHECK_FALSE(deleted.keptHome);
    CHECK_FALSE(isThere(scene.record.bundleURL));
    CHECK_FALSE(isThere(scene.homeOf()));
    CHECK(readFile(letter) == "dear");
}

TEST_CASE("an instance whose data is gone already is deleted without") {
    const Deletable scene;
    ambrel::fileSystem::removeTree(scene.homeOf());

    const auto plan = planDeletion(scene.record, UserData::remove, scene.user);
    const auto deleted = perform(plan, scene.user);

    CHECK_FALSE(plan.hasData);
    CHECK_FALSE(deleted.removedHome);
    CHECK_FALSE(isThere(scene.record.bundleURL));
}

TEST_CASE("a place that was an instance's home is the user's to share again without its data") {
    for (const auto data : {UserData::keep, UserData::remove}) {
        const Scene scene;
        const auto place = scene.tmp / "far/Work";
        auto request = scene.request();
        request.home = place;
        auto other = scene.request("Other");
        other.home = scene.tmp / "far/Other";
        const auto record = scene.make(request).record;
        scene.make(other);

        perform(planDeletion(record, data, scene.user), scene.user);

        makeFolder(place);
        writeFile(scene.home / ".config/user-dirs.dirs", "XDG_DOCUMENTS_DIR=\"" + place + "\"\n");
        const auto documents = ambrel::UserFolders(scene.user, *other.home).find("Documents");
        CHECK(documents.has_value() == (data == UserData::remove));
    }
}

TEST_CASE("a link to an instance goes alone") {
    const Deletable scene;
    auto link = scene.record;
    link.bundleURL = scene.tmp / "link.app";
    makeLink(link.bundleURL, scene.record.bundleURL);

    const auto plan = planDeletion(link, UserData::keep, scene.user);
    CHECK(plan.isLink);
    CHECK(plan.bundleSize == TreeSize{.items = 1, .bytes = 0});
    const auto deleted = perform(plan, scene.user);

    CHECK(deleted.wasLink);
    CHECK_FALSE(isThere(link.bundleURL));
    CHECK(isRealFolder(scene.record.bundleURL));
    CHECK(registration::findEntry(scene.record, scene.user));
}

TEST_CASE("data that is the user's own, another's or elsewhere is not deleted") {
    const Deletable scene;
    const auto other = scene.instance("Other");
    makeFolder(scene.tmp / "disk");
    makeLink(scene.tmp / "link", scene.tmp / "disk");
    struct Row {
        Path home;
        Kind kind;
    };
    for (const auto& row :
         {Row{"~", Kind::homeIsUsers}, Row{"~/Documents", Kind::homeIsUsers},
          Row{"~/.local/share/korvane", Kind::homeIsUsers},
          Row{"~/KorvaneInstances", Kind::homeIsShared},
          Row{"~/KorvaneInstances/Other/x", Kind::homeIsShared},
          Row{scene.tmp / "link", Kind::homeIsLink}, Row{"relative", Kind::homeIsMissing}}) {
        CAPTURE(row.home);
        const auto refusal = scene.refusedAt(row.home);
        CHECK(refusal.kind == row.kind);
        const auto subject =
            row.kind == Kind::homeIsMissing ? row.home : scene.user.expandingTilde(row.home);
        CHECK(refusal.subject == subject);
    }
}

TEST_CASE("a link to an instance takes no data along") {
    const Deletable scene;
    auto link = scene.record;
    link.bundleURL = scene.tmp / "link.app";
    makeLink(link.bundleURL, scene.record.bundleURL);

    const auto refusal =
        refusalOf(scene, [&] { planDeletion(link, UserData::remove, scene.user); });

    CHECK(refusal.kind == Kind::bundleIsLink);
    CHECK(refusal.subject == link.bundleURL);
}

TEST_CASE("an instance that changed since the plan was made is not deleted") {
    const Deletable scene;
    const auto plan = planDeletion(scene.record, UserData::remove, scene.user);
    const auto refused = [&] { return refusalOf(scene, [&] { perform(plan, scene.user); }); };

    scene.at("~/elsewhere");
    const auto edited = refused();
    scene.store(scene.record, scene.record.config);
    const auto away = scene.tmp / "away.app";
    ambrel::fileSystem::move(scene.record.bundleURL, away);
    const auto gone = refused();
    makeLink(scene.record.bundleURL, away);
    const auto linked = refused();

    for (const auto& refusal : {edited, gone, linked}) {
        CHECK(refusal.kind == Kind::changedMeanwhile);
        CHECK(refusal.subject == scene.record.bundleURL);
        CHECK(refusal.remedy == Remedy::lookAgain);
    }
}

TEST_CASE("data that became another's since the plan was made is not deleted") {
    const Deletable scene;
    const auto plan = planDeletion(scene.record, UserData::remove, scene.user);
    auto inside = scene.request("Inside");
    inside.home = "~/KorvaneInstances/Work/inner";
    scene.make(inside);

    const auto refusal = refusalOf(scene, [&] { perform(plan, scene.user); });

    CHECK(refusal.kind == Kind::homeIsShared);
}

TEST_CASE("an instance that runs is not deleted, with its data or without, but a link to it is") {
    const Deletable scene;
    const auto plan = planDeletion(scene.record, UserData::keep, scene.user);
    auto link = scene.record;
    link.bundleURL = scene.tmp / "link.app";
    makeLink(link.bundleURL, scene.record.bundleURL);
    const Waiting process({{"HOME", scene.homeOf()}});

    for (const auto& refusal :
         {refusalOf(scene, [&] { planDeletion(scene.record, UserData::keep, scene.user); }),
          refusalOf(scene, [&] { planDeletion(scene.record, UserData::remove, scene.user); }),
          refusalOf(scene, [&] { perform(plan, scene.user); })}) {
        CHECK(refusal.kind == Kind::instanceRuns);
        CHECK(refusal.subject == "Work");
        CHECK(refusal.remedy == Remedy::stopFirst);
    }
    CHECK(perform(planDeletion(link, UserData::keep, scene.user), scene.user).wasLink);
}

TEST_CASE("a bundle whose folder cannot be written stays with its data and its entry") {
    const Deletable scene;
    giveToOrdinaryUser(scene.tmp.path());
    setMode(scene.home / "Applications", 0555);

    const auto said = asOrdinaryUser([&]() -> std::string {
        perform(planDeletion(scene.record, UserData::remove, scene.user), scene.user);
        return "deleted";
    });

    CHECK(beginsWith(said, "threw: Cannot delete " + scene.record.bundleURL));
    CHECK(readFile(scene.data) == "mine");
    CHECK(registration::findEntry(scene.record, scene.user));
}

TEST_CASE("an instance that has the user's own home keeps no other's data from being deleted") {
    const Deletable scene;
    auto request = scene.request("Own");
    request.home = "~";
    scene.make(request);
    auto wider = scene.request("Wider");
    wider.home = scene.tmp.path();
    scene.make(wider);

    perform(planDeletion(scene.record, UserData::remove, scene.user), scene.user);

    CHECK_FALSE(isThere(scene.homeOf()));
}

} // namespace korvane::test
