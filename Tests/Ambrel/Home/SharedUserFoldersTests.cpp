#include "Ambrel/Launch/InstanceLauncher.h"

#include "Support/Environment.h"
#include "Support/Expect.h"
#include "Support/Programs.h"

#include <sys/stat.h>
#include <unistd.h>

using namespace ambrel;
using namespace korvane::test;

namespace {

using Counts = std::map<std::string, int>;

void linkIfSafe(const Path& link, const Path& target) {
    InstanceLauncher::linkIfSafe(link, target);
}

/// A user with the three folders and an instance home beside it.
struct Homes {
    explicit Homes(const TempDir& tmp) : user(tmp), instance(tmp / "instance") {
        for (const auto name : InstanceLauncher::sharedUserFolders)
            makeFolder(user / std::string(name));
    }
    UserHome user;
    Path instance;
};

} // namespace

TEST_CASE("the shared folders are Downloads, Documents and Desktop, in this order") {
    const auto& folders = InstanceLauncher::sharedUserFolders;
    CHECK(Strings(folders.begin(), folders.end()) == Strings{"Downloads", "Documents", "Desktop"});
}

TEST_CASE("without a Desktop in the user's home the instance's Desktop is left as it is") {
    const TempDir tmp;
    const UserHome user(tmp);
    makeFolder(user / "Downloads");
    makeFolder(tmp / "instance/Desktop");

    InstanceLauncher::ensureSharedUserFolders(tmp / "instance", user.places());

    CHECK(isRealFolder(tmp / "instance/Desktop"));
    CHECK(linkText(tmp / "instance/Downloads") == user / "Downloads");
    CHECK_FALSE(isThere(tmp / "instance/Documents"));
    CHECK_FALSE(isThere(user / "Desktop"));
}

TEST_CASE("an empty Downloads is replaced by a link and one with a file is kept until migrated") {
    const TempDir tmp;
    const Homes homes(tmp);
    makeFolder(homes.instance + "/Downloads");
    writeFile(homes.instance + "/Documents/letter.txt", "dear");

    InstanceLauncher::ensureSharedUserFolders(homes.instance, homes.user.places());

    CHECK(linkText(homes.instance + "/Downloads") == homes.user / "Downloads");
    CHECK(isRealFolder(homes.instance + "/Documents"));
    CHECK(readFile(homes.instance + "/Documents/letter.txt") == "dear");

    CHECK(InstanceLauncher::migrateSharedUserFolders(homes.instance, homes.user.places()) ==
          Counts{{"Documents", 1}});

    CHECK(linkText(homes.instance + "/Documents") == homes.user / "Documents");
    CHECK(readFile(homes.user / "Documents/letter.txt") == "dear");
}

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

TEST_CASE("nothing is linked to a target that does not exist") {
    const TempDir tmp;
    makeLink(tmp / "dangling", tmp / "nowhere");
    makeFolder(tmp / "empty");

    linkIfSafe(tmp / "parent/link", tmp / "nowhere");
    linkIfSafe(tmp / "parent/link", tmp / "dangling");
    linkIfSafe(tmp / "empty", tmp / "nowhere");

    CHECK(namesIn(tmp.path()) == Strings{"dangling", "empty"});
    CHECK(isRealFolder(tmp / "empty"));
}

TEST_CASE("a link holds the target's path as given and missing folders above it are made") {
    const TempDir tmp;
    makeFolder(tmp / "real");
    makeLink(tmp / "alias", "real");

    linkIfSafe(tmp / "a/b/link", (tmp / "alias") + "/../real/");

    CHECK(linkText(tmp / "a/b/link") == (tmp / "alias") + "/../real/");
}

TEST_CASE("a symbolic link is never replaced, wherever it points") {
    const TempDir tmp;
    makeFolder(tmp / "target");
    makeFolder(tmp / "elsewhere");
    makeLink(tmp / "other", tmp / "elsewhere");
    makeLink(tmp / "dangling", "nowhere");
    makeLink(tmp / "own", tmp / "target");
    const auto before = snapshot(tmp.path());

    for (const auto* name : {"other", "dangling", "own"}) linkIfSafe(tmp / name, tmp / "target");

    CHECK(snapshot(tmp.path()) == before);
}

TEST_CASE("a folder with even one entry is never replaced, not even with DS_Store alone") {
    const TempDir tmp;
    makeFolder(tmp / "target");
    writeFile(tmp / "finder/.DS_Store");
    makeFolder(tmp / "nested/empty");
    makeLink(tmp / "linked/dangling", "nowhere");
    const auto before = snapshot(tmp.path());

    for (const auto* name : {"finder", "nested", "linked"}) linkIfSafe(tmp / name, tmp / "target");

    CHECK(snapshot(tmp.path()) == before);
}

TEST_CASE("an empty folder, a plain file and a pipe are replaced by the link") {
    const TempDir tmp;
    makeFolder(tmp / "target");
    makeFolder(tmp / "folder");
    writeFile(tmp / "file", "the one intended loss");
    REQUIRE(::mkfifo((tmp / "pipe").c_str(), 0600) == 0);

    for (const auto* name : {"folder", "file", "pipe"}) {
        linkIfSafe(tmp / name, tmp / "target");
        CAPTURE(name);
        CHECK(linkText(tmp / name) == tmp / "target");
    }
}

TEST_CASE("a target may be a plain file or a link to something") {
    const TempDir tmp;
    writeFile(tmp / "file");
    makeLink(tmp / "alias", "file");

    linkIfSafe(tmp / "first", tmp / "file");
    linkIfSafe(tmp / "second", tmp / "alias");

    CHECK(linkText(tmp / "first") == tmp / "file");
    CHECK(linkText(tmp / "second") == tmp / "alias");
}

TEST_CASE("nothing is linked onto itself, whatever path leads there") {
    const TempDir tmp;
    makeFolder(tmp / "user/Downloads"); // empty: it would be replaced
    writeFile(tmp / "user/file", "kept");
    makeLink(tmp / "alias", "user");
    const auto before = snapshot(tmp.path());

    linkIfSafe(tmp / "user/Downloads", tmp / "user/Downloads");
    linkIfSafe(tmp / "alias/Downloads", tmp / "user/Downloads");
    linkIfSafe(tmp / "user/Downloads", tmp / "alias/Downloads");
    linkIfSafe(tmp / "user/../user/./Downloads", tmp / "user/Downloads");
    linkIfSafe(tmp / "alias/file", tmp / "user/file");
    linkIfSafe((tmp / "user/Downloads") + "/", tmp / "user/Downloads");

    CHECK(snapshot(tmp.path()) == before);
}

TEST_CASE("a folder whose listing fails stays whole") {
    const TempDir tmp;
    makeFolder(tmp / "target");
    writeFile(tmp / "locked/sub/file", "kept");
    giveToOrdinaryUser(tmp.path());
    setMode(tmp / "locked", 0000);

    asOrdinaryUser([&] {
        linkIfSafe(tmp / "locked", tmp / "target");
        return std::string();
    });

    setMode(tmp / "locked", 0700);
    CHECK(isRealFolder(tmp / "locked"));
    CHECK(readFile(tmp / "locked/sub/file") == "kept");
}

TEST_CASE("failures of linking are swallowed and change nothing") {
    const TempDir tmp;
    makeFolder(tmp / "target");
    writeFile(tmp / "file", "kept");
    makeFolder(tmp / "locked/empty");
    giveToOrdinaryUser(tmp.path());
    setMode(tmp / "locked", 0555);
    const auto before = snapshot(tmp.path());

    const auto said = asOrdinaryUser([&]() -> std::string {
        linkIfSafe(tmp / "file/below/link", tmp / "target");
        linkIfSafe(tmp / "locked/new/link", tmp / "target");
        linkIfSafe(tmp / "locked/link", tmp / "target");
        linkIfSafe(tmp / "locked/empty", tmp / "target");
        linkIfSafe("", tmp / "target");
        linkIfSafe(tmp / "x" + std::string("\0y", 2), tmp / "target");
        InstanceLauncher::ensureSharedUserFolders(tmp / "locked", nobody());
        InstanceLauncher::migrateSharedUserFolders(tmp / "locked", tmp / "file");
        return "returned";
    });

    CHECK(said == "returned");
    CHECK(snapshot(tmp.path()) == before);
}

TEST_CASE("the shared folders are those of CFFIXED_USER_HOME and not of HOME") {
    const TempDir tmp;
    const Homes homes(tmp);
    makeFolder(tmp / "decoy/Downloads");
    const ScopedVariable home("HOME", tmp / "decoy");

    InstanceLauncher::ensureSharedUserFolders(homes.instance + "/", homes.user.places());

    CHECK(linkText(homes.instance + "/Downloads") == homes.user / "Downloads");
}

TEST_CASE("an instance whose home is the user's own is left alone by linking and migration") {
    const TempDir tmp;
    const Homes homes(tmp);
    makeLink(tmp / "alias", homes.user.path());
    writeFile(homes.user / "Documents/.DS_Store", "x");
    writeFile(homes.user / "Documents/letter", "dear");
    const auto before = snapshot(tmp.path());

    for (const auto& home : {homes.user.path(), homes.user.path() + "/", tmp / "alias",
                             tmp / "alias/.", homes.user / "../user"}) {
        CAPTURE(home);
        InstanceLauncher::ensureSharedUserFolders(home, homes.user.places());
        CHECK(snapshot(tmp.path()) == before);
        InstanceLauncher::migrateSharedUserFolders(home, homes.user.places());
        CHECK(snapshot(tmp.path()) == before);
        InstanceLauncher::migrateSharedUserFolders(home, homes.user.path());
        CHECK(snapshot(tmp.path()) == before);
        InstanceLauncher::ensureKeychainAccess(home, homes.user.places());
        CHECK(snapshot(tmp.path()) == before);
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
