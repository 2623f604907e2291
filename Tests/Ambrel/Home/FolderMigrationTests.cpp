#include "Homes.h"

#include "Support/Expect.h"
#include "Support/Programs.h"

using namespace ambrel;
using namespace korvane::test;

TEST_CASE("migration renames a file whose name is taken, drops DS_Store and links the folder") {
    const TempDir tmp;
    const Homes homes(tmp);
    writeFile(homes.instance + "/Downloads/a.txt", "the instance's");
    writeFile(homes.instance + "/Downloads/.DS_Store", "view settings");
    writeFile(homes.user / "Downloads/a.txt", "the user's");

    const auto counts =
        InstanceLauncher::migrateSharedUserFolders(homes.instance, homes.user.places());

    CHECK(counts == Counts{{"Downloads", 1}});
    CHECK(namesIn(homes.user / "Downloads") == Strings{"a (1).txt", "a.txt"});
    CHECK(readFile(homes.user / "Downloads/a (1).txt") == "the instance's");
    CHECK(readFile(homes.user / "Downloads/a.txt") == "the user's");
    CHECK(linkText(homes.instance + "/Downloads") == homes.user / "Downloads");
}

TEST_CASE("a folder that the instance does not have gets no result entry but is linked") {
    const TempDir tmp;
    const Homes homes(tmp);

    const auto counts =
        InstanceLauncher::migrateSharedUserFolders(homes.instance, homes.user.places());

    CHECK(counts.empty());
    CHECK(namesIn(homes.instance) == Strings{"Desktop", "Documents", "Downloads"});
    for (const auto* name : {"Desktop", "Documents", "Downloads"}) {
        CHECK(linkText(homes.instance + "/" + name) == homes.user / name);
    }
}

TEST_CASE("migration is not needed for links and is needed for any real folder or file") {
    const TempDir tmp;
    const Homes homes(tmp);
    CHECK_FALSE(InstanceLauncher::needsSharedFolderMigration(homes.instance, homes.user.places()));
    InstanceLauncher::ensureSharedUserFolders(homes.instance, homes.user.places());
    CHECK_FALSE(InstanceLauncher::needsSharedFolderMigration(homes.instance, homes.user.places()));
    for (const std::string name : {"Downloads", "Documents", "Desktop"}) {
        CAPTURE(name);
        const auto folder = tmp / "with-folder-" + name;
        makeFolder(folder + "/" + name);
        CHECK(InstanceLauncher::needsSharedFolderMigration(folder, homes.user.places()));
        const auto file = tmp / "with-file-" + name;
        writeFile(file + "/" + name);
        CHECK(InstanceLauncher::needsSharedFolderMigration(file, homes.user.places()));
        const auto dangling = tmp / "with-dangling-" + name;
        makeLink(dangling + "/" + name, "/nowhere/at/all");
        CHECK_FALSE(InstanceLauncher::needsSharedFolderMigration(dangling, homes.user.places()));
    }
}

TEST_CASE("a taken name gets the next free number before its last extension") {
    struct Row {
        std::string name;
        Strings taken;
        std::string result;
    };
    const std::vector<Row> table{
        {"Report.pdf", {"Report.pdf"}, "Report (1).pdf"},
        {"Report.pdf", {"Report.pdf", "Report (1).pdf"}, "Report (2).pdf"},
        {"Report.pdf", {"Report.pdf", "Report (2).pdf"}, "Report (1).pdf"},
        {"Notes", {"Notes"}, "Notes (1)"},
        {"archive.tar.gz", {"archive.tar.gz"}, "archive.tar (1).gz"},
        {".profile", {".profile"}, ".profile (1)"},
        {"free.txt", {}, "free.txt"},
        {"n\n\xff.x", {"n\n\xff.x"}, "n\n\xff (1).x"},
        {"a (1).txt", {"a (1).txt"}, "a (1) (1).txt"},
    };
    for (const auto& row : table) {
        CAPTURE(row.name);
        const TempDir tmp;
        writeFile(tmp / "instance/Downloads/" + row.name, "moved");
        for (const auto& name : row.taken) writeFile(tmp / "into/Downloads/" + name, "taken");

        const auto counts =
            InstanceLauncher::migrateSharedUserFolders(tmp / "instance", tmp / "into");

        CHECK(counts == Counts{{"Downloads", 1}});
        CHECK(readFile(tmp / "into/Downloads/" + row.result) == "moved");
        CHECK(namesIn(tmp / "into/Downloads").size() == row.taken.size() + 1);
    }
}

TEST_CASE("numbers are not padded and have no upper limit of two digits") {
    const TempDir tmp;
    writeFile(tmp / "instance/Desktop/a.b", "moved");
    writeFile(tmp / "into/Desktop/a.b");
    for (int number = 1; number <= 120; ++number) {
        writeFile(tmp / "into/Desktop/a (" + std::to_string(number) + ").b");
    }

    InstanceLauncher::migrateSharedUserFolders(tmp / "instance", tmp / "into");

    CHECK(readFile(tmp / "into/Desktop/a (121).b") == "moved");
}

TEST_CASE("a whole folder moves beside one of the same name") {
    const TempDir tmp;
    writeFile(tmp / "instance/Documents/Work.v1/deep/file", "instance");
    writeFile(tmp / "into/Documents/Work.v1/file", "user");

    const auto counts = InstanceLauncher::migrateSharedUserFolders(tmp / "instance", tmp / "into");

    CHECK(counts == Counts{{"Documents", 1}});
    CHECK(readFile(tmp / "into/Documents/Work (1).v1/deep/file") == "instance");
    CHECK(namesIn(tmp / "into/Documents/Work.v1") == Strings{"file"});
}

TEST_CASE("all three folders are counted and missing destinations are made") {
    const TempDir tmp;
    for (const auto* name : {"a", "b", ".hidden"}) writeFile(tmp / "instance/Downloads/" + name);
    makeFolder(tmp / "instance/Documents");
    writeFile(tmp / "instance/Desktop/.DS_Store");

    const auto counts = InstanceLauncher::migrateSharedUserFolders(tmp / "instance", tmp / "into");

    CHECK(counts == Counts{{"Downloads", 3}, {"Documents", 0}, {"Desktop", 0}});
    for (const auto* name : {"Downloads", "Documents", "Desktop"}) {
        CAPTURE(name);
        CHECK(linkText(tmp / "instance/" + name) == tmp / "into/" + name);
    }
    CHECK(namesIn(tmp / "into/Downloads") == Strings{".hidden", "a", "b"});
    CHECK(InstanceLauncher::migrateSharedUserFolders(tmp / "instance", tmp / "into").empty());
}

TEST_CASE("a source that is a link is skipped entirely, even a dangling one") {
    const TempDir tmp;
    writeFile(tmp / "elsewhere/file", "kept");
    makeLink(tmp / "instance/Downloads", tmp / "elsewhere");
    makeLink(tmp / "instance/Documents", "nowhere");

    const auto counts = InstanceLauncher::migrateSharedUserFolders(tmp / "instance", tmp / "into");

    CHECK(counts.empty());
    CHECK(linkText(tmp / "instance/Downloads") == tmp / "elsewhere");
    CHECK(linkText(tmp / "instance/Documents") == "nowhere");
    CHECK(namesIn(tmp / "elsewhere") == Strings{"file"});
    CHECK_FALSE(isThere(tmp / "into"));
}

TEST_CASE("only the exact name DS_Store with its dot is dropped, and only when it is one item") {
    const TempDir tmp;
    for (const auto* name : {".ds_store", "DS_Store", ".DS_Store.bak"}) {
        writeFile(tmp / "instance/Downloads/" + name, name);
    }
    writeFile(tmp / "instance/Documents/.DS_Store/precious", "kept");

    const auto counts = InstanceLauncher::migrateSharedUserFolders(tmp / "instance", tmp / "into");

    CHECK(counts == Counts{{"Downloads", 3}, {"Documents", 0}});
    CHECK(namesIn(tmp / "into/Downloads").size() == 3);
    CHECK(readFile(tmp / "instance/Documents/.DS_Store/precious") == "kept");
}

TEST_CASE("links among the entries move as links and what they lead to stays") {
    const TempDir tmp;
    writeFile(tmp / "outside/file", "kept");
    makeLink(tmp / "instance/Downloads/to-folder", tmp / "outside");
    makeLink(tmp / "instance/Downloads/dangling", "nowhere");

    const auto counts = InstanceLauncher::migrateSharedUserFolders(tmp / "instance", tmp / "into");

    CHECK(counts == Counts{{"Downloads", 2}});
    CHECK(linkText(tmp / "into/Downloads/to-folder") == tmp / "outside");
    CHECK(linkText(tmp / "into/Downloads/dangling") == "nowhere");
    CHECK(readFile(tmp / "outside/file") == "kept");
}

TEST_CASE("a dangling link in the user's folder is never replaced by a moved file") {
    const TempDir tmp;
    writeFile(tmp / "instance/Downloads/a.txt", "kept");
    makeLink(tmp / "into/Downloads/a.txt", tmp / "unmounted/a.txt");

    InstanceLauncher::migrateSharedUserFolders(tmp / "instance", tmp / "into");

    CHECK(linkText(tmp / "into/Downloads/a.txt") == tmp / "unmounted/a.txt");
    const auto contents = contentsBelow({tmp / "instance", tmp / "into"});
    CHECK(contents.count("file kept") == 1);
}

TEST_CASE("a name too long for a number stays where it is and blocks the link") {
    const TempDir tmp;
    const std::string name(255, 'n');
    writeFile(tmp / "instance/Downloads/" + name, "instance");
    writeFile(tmp / "instance/Downloads/short", "moved");
    writeFile(tmp / "into/Downloads/" + name, "user");

    const auto counts = InstanceLauncher::migrateSharedUserFolders(tmp / "instance", tmp / "into");

    CHECK(counts == Counts{{"Downloads", 1}});
    CHECK(readFile(tmp / "instance/Downloads/" + name) == "instance");
    CHECK(readFile(tmp / "into/Downloads/" + name) == "user");
}

TEST_CASE("a plain file in the place of the instance's folder is replaced by the link") {
    const TempDir tmp;
    writeFile(tmp / "instance/Downloads", "the one intended loss");

    const auto counts = InstanceLauncher::migrateSharedUserFolders(tmp / "instance", tmp / "into");

    CHECK(counts == Counts{{"Downloads", 0}});
    CHECK(linkText(tmp / "instance/Downloads") == tmp / "into/Downloads");
}

TEST_CASE("a plain file in the place of the instance's folder stays where no link can replace it") {
    const TempDir tmp;
    for (const auto* name : {"Downloads", "Documents"}) {
        writeFile(tmp / "instance/" + name, "the only copy");
    }
    writeFile(tmp / "into/Documents", "a file in the way");
    makeLink(tmp / "into/Downloads", tmp / "unmounted/Downloads");

    InstanceLauncher::migrateSharedUserFolders(tmp / "instance", tmp / "into");

    CHECK(readFile(tmp / "instance/Downloads") == "the only copy");
    CHECK(readFile(tmp / "instance/Documents") == "the only copy");
}

TEST_CASE("what cannot be moved stays where it was") {
    const TempDir tmp;
    writeFile(tmp / "instance/Downloads/a", "a");
    writeFile(tmp / "instance/Documents/b", "b");
    writeFile(tmp / "into/Downloads", "a file in the way");
    makeLink(tmp / "into/Documents", tmp / "unmounted");
    const auto before = snapshot(tmp.path());

    const auto counts = InstanceLauncher::migrateSharedUserFolders(tmp / "instance", tmp / "into");

    CHECK(counts == Counts{{"Downloads", 0}, {"Documents", 0}});
    auto after = snapshot(tmp.path());
    after.erase((tmp / "instance/Desktop") + " 511 link " + (tmp / "into/Desktop"));
    CHECK(after == before);
}

TEST_CASE("an instance folder that cannot be listed stays whole") {
    const TempDir tmp;
    writeFile(tmp / "instance/Downloads/sub/file", "kept");
    makeFolder(tmp / "into/Downloads");
    giveToOrdinaryUser(tmp.path());
    setMode(tmp / "instance/Downloads", 0000);

    const auto said = asOrdinaryUser([&] {
        const auto counts =
            InstanceLauncher::migrateSharedUserFolders(tmp / "instance", tmp / "into");
        return std::to_string(counts.at("Downloads"));
    });

    CHECK(said == "0");
    setMode(tmp / "instance/Downloads", 0700);
    CHECK(readFile(tmp / "instance/Downloads/sub/file") == "kept");
    CHECK(isRealFolder(tmp / "instance/Downloads"));
}

TEST_CASE("the user's folder being a link to the instance's own is left alone") {
    const TempDir tmp;
    writeFile(tmp / "instance/Downloads/a", "kept");
    writeFile(tmp / "instance/Downloads/.DS_Store", "kept too");
    makeLink(tmp / "into/Downloads", tmp / "instance/Downloads");

    InstanceLauncher::migrateSharedUserFolders(tmp / "instance", tmp / "into");

    CHECK(namesIn(tmp / "instance/Downloads") == Strings{".DS_Store", "a"});
    CHECK(readFile(tmp / "instance/Downloads/a") == "kept");
    CHECK(linkText(tmp / "into/Downloads") == tmp / "instance/Downloads");
}

TEST_CASE("a user's folder inside the instance's own loses nothing") {
    const TempDir tmp;
    writeFile(tmp / "instance/Downloads/a", "a");
    writeFile(tmp / "instance/Downloads/Downloads/b", "b");
    const auto before = contentsBelow({tmp.path()});

    InstanceLauncher::migrateSharedUserFolders(tmp / "instance", tmp / "instance/Downloads");

    CHECK(isRealFolder(tmp / "instance/Downloads"));
    for (const auto& content : before) {
        CAPTURE(content);
        CHECK(contentsBelow({tmp.path()}).count(content) == 1);
    }
}

TEST_CASE("migration across file systems moves everything and leaves no remains") {
    const TempDir here;
    const TempDir there = TempDir::onAnotherFileSystemThan(here);
    writeFile(here / "instance/Downloads/a.txt", "instance");
    writeFile(here / "instance/Downloads/folder/b", "b");
    makeLink(here / "instance/Downloads/folder/link", "b");
    writeFile(there / "Downloads/a.txt", "user");

    const auto counts = InstanceLauncher::migrateSharedUserFolders(here / "instance", there.path());

    CHECK(counts == Counts{{"Downloads", 2}});
    CHECK(namesIn(there / "Downloads") == Strings{"a (1).txt", "a.txt", "folder"});
    CHECK(readFile(there / "Downloads/a (1).txt") == "instance");
    CHECK(linkText(there / "Downloads/folder/link") == "b");
    CHECK(linkText(here / "instance/Downloads") == there / "Downloads");
}
