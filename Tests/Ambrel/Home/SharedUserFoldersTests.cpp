#include "Homes.h"

#include "Support/Expect.h"
#include "Support/Programs.h"

#include <sys/stat.h>

using namespace ambrel;
using namespace korvane::test;

namespace {

void linkIfSafe(const Path& link, const Path& target) {
    InstanceLauncher::linkIfSafe(link, target);
}

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
