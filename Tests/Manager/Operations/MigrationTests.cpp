#include "Manager/Operations/Migration.h"

#include "Scene.h"
#include "Support/Waiting.h"

namespace korvane::test {

using Kind = Refusal::Kind;

namespace {

struct Migratable : Scene {
    ambrel::InstanceRecord record = instance();
    Path letter = writeFile(homeOf() + "/Documents/letter", "dear");
};

} // namespace

TEST_CASE("a plan of a migration changes nothing and tells what would be moved") {
    const Migratable scene;
    writeFile(scene.homeOf() + "/Downloads/folder/file", "12");
    makeLink(scene.homeOf() + "/Desktop", scene.home / "Desktop");
    const auto before = scene.everything();

    const auto plan = planMigration(scene.record, scene.user);

    CHECK(scene.everything() == before);
    CHECK(plan.home == scene.homeOf());
    const std::vector<PrivateFolder> expected{
        {"Downloads", scene.homeOf() + "/Downloads", scene.home / "Downloads", {3, 2}},
        {"Documents", scene.homeOf() + "/Documents", scene.home / "Documents", {2, 4}},
    };
    CHECK((plan.folders == expected));
}

TEST_CASE("migrating moves what is in the folders and leaves links") {
    const Migratable scene;
    writeFile(scene.home / "Documents/letter", "the user's");
    makeFolder(scene.homeOf() + "/Desktop");
    makeFolder(scene.home / "Desktop");

    const auto migrated = perform(planMigration(scene.record, scene.user), scene.user);

    const std::vector<MovedFolder> expected{{"Desktop", scene.home / "Desktop", 0},
                                            {"Documents", scene.home / "Documents", 1}};
    CHECK((migrated.folders == expected));
    CHECK_FALSE(migrated.failure);
    CHECK(readFile(scene.home / "Documents/letter") == "the user's");
    CHECK(readFile(scene.home / "Documents/letter (1)") == "dear");
    CHECK(isLink(scene.homeOf() + "/Documents"));
    CHECK(planMigration(scene.record, scene.user).folders.empty());
}

TEST_CASE("what cannot be moved stays, and is told as a failure") {
    const Migratable scene;
    writeFile(scene.home / "Documents", "in the way");

    const auto migrated = perform(planMigration(scene.record, scene.user), scene.user);

    REQUIRE(migrated.failure);
    CHECK(migrated.failure->kind == Kind::notAllMoved);
    CHECK(migrated.failure->subject == scene.homeOf());
    CHECK(contains(migrated.failure->sentence(), "stays in " + scene.homeOf() + ". Cannot"));
    CHECK(contains(migrated.failure->sentence(), scene.home / "Documents"));
    CHECK(isOneLine(migrated.failure->sentence()));
    CHECK(readFile(scene.letter) == "dear");
}

TEST_CASE("an instance without folders to share is not migrated") {
    const Migratable scene;
    struct Row {
        Path home;
        bool isSharing;
        Kind kind;
        std::string subject;
    };
    for (const auto& row :
         {Row{"relative", true, Kind::homeIsMissing, "relative"},
          Row{"~", true, Kind::homeIsUsers, scene.home.path()},
          Row{scene.record.config.instanceHome, false, Kind::foldersNotShared, "Work"}}) {
        auto config = scene.record.config;
        config.instanceHome = row.home;
        config.shareUserFolders = row.isSharing;
        const auto record = scene.store(scene.record, config);
        const auto refusal = refusalOf(scene, [&] { planMigration(record, scene.user); });
        CHECK(refusal.kind == row.kind);
        CHECK(refusal.subject == row.subject);
        const bool canShare = row.kind == Kind::foldersNotShared;
        CHECK(refusal.remedy == (canShare ? Remedy::shareFolders : Remedy::none));
    }
}

TEST_CASE("an instance or a destination that changed since the plan was made moves nothing") {
    const Migratable scene;
    const auto plan = planMigration(scene.record, scene.user);
    const auto refused = [&] { return refusalOf(scene, [&] { perform(plan, scene.user); }); };

    writeFile(scene.home / ".config/user-dirs.dirs", "XDG_DOCUMENTS_DIR=\"$HOME/Dokumente\"\n");
    planMigration(scene.record, scene.user); // the library lists the homes the first time it asks
    const auto elsewhere = refused();
    auto config = scene.record.config;
    config.shareUserFolders = false;
    scene.store(scene.record, config);
    const auto edited = refused();

    CHECK(elsewhere.kind == Kind::changedMeanwhile);
    CHECK(elsewhere.subject == scene.home / "Documents");
    CHECK(edited.kind == Kind::changedMeanwhile);
    CHECK(edited.subject == scene.record.bundleURL);
    CHECK(readFile(scene.letter) == "dear");
}

TEST_CASE("the folders of an instance that runs are not moved") {
    const Migratable scene;
    const auto plan = planMigration(scene.record, scene.user);
    const Waiting process({{"HOME", scene.homeOf()}});

    for (const auto& refusal : {refusalOf(scene, [&] { planMigration(scene.record, scene.user); }),
                                refusalOf(scene, [&] { perform(plan, scene.user); })}) {
        CHECK(refusal.kind == Kind::instanceRuns);
        CHECK(refusal.remedy == Remedy::stopFirst);
    }
}

} // namespace korvane::test
