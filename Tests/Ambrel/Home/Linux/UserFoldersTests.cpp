#include "Ambrel/Home/UserFolders.h"

#include "Ambrel/Launch/InstanceLauncher.h"
#include "Support/Builders.h"
#include "Support/Environment.h"
#include "Support/Expect.h"
#include "Support/Programs.h"

using namespace ambrel;
using namespace korvane::test;

namespace {

using Counts = std::map<std::string, int>;

/// A user who may have set folders, and an instance home beside the user's.
struct Desktop {
    Desktop() : user(tmp), instance(makeFolder(tmp / "instance")) {}

    void set(const std::string& lines) const { writeFile(user / ".config/user-dirs.dirs", lines); }
    std::optional<Path> find(const std::string& name) const {
        return UserFolders(user.places(), instance).find(name);
    }
    /// The Documents folder with `value` written behind "XDG_DOCUMENTS_DIR=".
    std::optional<Path> documents(const std::string& value) const {
        set("XDG_DOCUMENTS_DIR=" + value + "\n");
        return find("Documents");
    }

    TempDir tmp;
    UserHome user;
    Path instance;
};

/// A user with a German desktop.
struct GermanDesktop : Desktop {
    GermanDesktop() {
        set("# This file is written by xdg-user-dirs-update\n"
            "XDG_DESKTOP_DIR=\"$HOME/Schreibtisch\"\n"
            "XDG_DOWNLOAD_DIR=\"$HOME/Downloads\"\n"
            "XDG_DOCUMENTS_DIR=\"$HOME/Dokumente\"\n"
            "XDG_MUSIC_DIR=\"$HOME/Musik\"\n");
        for (const auto* name : {"Schreibtisch", "Downloads", "Dokumente"}) makeFolder(user / name);
    }
};

} // namespace

TEST_CASE("without settings the user's folders have their usual names") {
    const Desktop desktop;
    CHECK(desktop.find("Documents") == desktop.user / "Documents");
    desktop.set("XDG_MUSIC_DIR=\"$HOME/Musik\"\n");
    CHECK(desktop.find("Documents") == desktop.user / "Documents");
    CHECK(UserFolders::allSet(desktop.user.places()).empty());
}

TEST_CASE("an instance's links lead to the folders that a German user has set") {
    const GermanDesktop desktop;

    InstanceLauncher::ensureSharedUserFolders(desktop.instance, desktop.user.places());

    CHECK(namesIn(desktop.instance) == Strings{"Desktop", "Documents", "Downloads"});
    CHECK(linkText(desktop.instance + "/Desktop") == desktop.user / "Schreibtisch");
    CHECK(linkText(desktop.instance + "/Documents") == desktop.user / "Dokumente");
    CHECK(linkText(desktop.instance + "/Downloads") == desktop.user / "Downloads");
}

TEST_CASE("migration moves into the folders that the user has set") {
    const GermanDesktop desktop;
    writeFile(desktop.instance + "/Documents/letter", "dear");
    writeFile(desktop.user / "Dokumente/letter", "the user's");
    CHECK(InstanceLauncher::needsSharedFolderMigration(desktop.instance, desktop.user.places()));

    CHECK(InstanceLauncher::migrateSharedUserFolders(desktop.instance, desktop.user.places()) ==
          Counts{{"Documents", 1}});

    CHECK(readFile(desktop.user / "Dokumente/letter") == "the user's");
    CHECK(readFile(desktop.user / "Dokumente/letter (1)") == "dear");
    CHECK(linkText(desktop.instance + "/Documents") == desktop.user / "Dokumente");
    CHECK_FALSE(isThere(desktop.user / "Documents"));
    CHECK_FALSE(
        InstanceLauncher::needsSharedFolderMigration(desktop.instance, desktop.user.places()));
}

TEST_CASE("migration into a given folder uses the folders' own names whatever the user has set") {
    const GermanDesktop desktop;
    writeFile(desktop.instance + "/Documents/letter", "dear");

    InstanceLauncher::migrateSharedUserFolders(desktop.instance, desktop.tmp / "into");

    CHECK(readFile(desktop.tmp / "into/Documents/letter") == "dear");
    CHECK(namesIn(desktop.user / "Dokumente").empty());
}

TEST_CASE("values are read as a shell reads them between double quotes") {
    const Desktop desktop;
    const auto& user = desktop.user;
    CHECK(desktop.documents("\"$HOME/Dokumente\"") == user / "Dokumente");
    CHECK(desktop.documents("\"$HOME/Dokumente/\"") == user / "Dokumente");
    CHECK(desktop.documents("\"/srv/docs\"") == "/srv/docs");
    CHECK(desktop.documents(R"("/srv/a \"b\" \$c \\ \`d\` \e")") == R"(/srv/a "b" $c \ `d` \e)");
    CHECK(desktop.documents("\"/srv/docs\" # where they are") == "/srv/docs");
    CHECK(desktop.documents("\"/srv/docs\"\r") == "/srv/docs");
    CHECK(desktop.documents("  \"/srv/a b\"") == "/srv/a b");
    CHECK(desktop.documents("\"$HOME/T\xc3\xa9l\xc3\xa9/\xff\"") ==
          user / "T\xc3\xa9l\xc3\xa9/\xff");
}

TEST_CASE("the last of several assignments counts and comments are none") {
    const Desktop desktop;
    desktop.set("XDG_DOCUMENTS_DIR=\"/srv/first\"\n"
                " \tXDG_DOCUMENTS_DIR = \"/srv/second\"\n"
                "#XDG_DOCUMENTS_DIR=\"/srv/comment\"\n"
                "XDG_DOCUMENTS_DIRS=\"/srv/other\"\n"
                "MY_XDG_DOCUMENTS_DIR=\"/srv/other\"\n"
                "XDG_DESKTOP_DIR=\"/srv/last line without an end\"");
    CHECK(desktop.find("Documents") == "/srv/second");
    CHECK(desktop.find("Desktop") == "/srv/last line without an end");
    CHECK(UserFolders::allSet(desktop.user.places()) ==
          Strings{"/srv/last line without an end", "/srv/second"});
}

TEST_CASE("a value that is neither absolute nor below the home shares nothing") {
    const Desktop desktop;
    makeFolder(desktop.user / "Documents");
    for (const std::string& value :
         {std::string("\"Dokumente\""), std::string("\"./Dokumente\""), std::string("\"\""),
          std::string("\"$HOMEDokumente\""), std::string("\"\\$HOME/Dokumente\""),
          std::string("\"$OTHER/Dokumente\""), std::string("\"~/Dokumente\""),
          std::string("\"$HOME\\/Dokumente\""), std::string("\"/srv/unclosed"),
          std::string("/srv/unquoted"), std::string("'/srv/docs'"), std::string(),
          std::string("\"/srv/\0x\"", 9)}) {
        CAPTURE(value);
        CHECK_FALSE(desktop.documents(value).has_value());
        CHECK(UserFolders::allSet(desktop.user.places()).empty());
    }
}

TEST_CASE("a folder that is switched off is neither linked nor migrated nor counted") {
    for (const std::string value : {"\"$HOME/\"", "\"$HOME\"", "\"$HOME/.\"", "\"relative\""}) {
        CAPTURE(value);
        const Desktop desktop;
        makeFolder(desktop.user / "Documents");
        makeFolder(desktop.user / "Desktop");
        writeFile(desktop.instance + "/Documents/letter", "dear");
        desktop.set("XDG_DOCUMENTS_DIR=" + value + "\n");
        const auto before = snapshot(desktop.user.path());

        CHECK_FALSE(
            InstanceLauncher::needsSharedFolderMigration(desktop.instance, desktop.user.places()));
        CHECK(InstanceLauncher::migrateSharedUserFolders(desktop.instance, desktop.user.places())
                  .empty());
        InstanceLauncher::ensureSharedUserFolders(desktop.instance, desktop.user.places());

        CHECK(snapshot(desktop.user.path()) == before);
        CHECK(readFile(desktop.instance + "/Documents/letter") == "dear");
        CHECK(linkText(desktop.instance + "/Desktop") == desktop.user / "Desktop");
        CHECK(namesIn(desktop.instance) == Strings{"Desktop", "Documents"});
    }
}

TEST_CASE("a folder that is or contains the user's home shares nothing") {
    const Desktop desktop;
    const auto& tmp = desktop.tmp;
    makeLink(tmp / "alias", desktop.user.path());
    makeLink(desktop.user / "Up", "..");
    makeFolder(tmp / "far/away");
    makeLink(desktop.user / "Far", tmp / "far/away");
    for (const auto& place :
         {desktop.user.path(), desktop.user.path() + "/", tmp.path(), std::string("/"),
          std::string("//"), tmp / "alias", tmp / "missing/..", tmp / "user/../user/.",
          desktop.user / "Up",
          desktop.user / "Far/.."}) { // by text the home, by links another place
        CAPTURE(place);
        CHECK_FALSE(desktop.documents("\"" + place + "\"").has_value());
        CHECK(UserFolders::allSet(desktop.user.places()).size() == 1);
    }
    CHECK_FALSE(desktop.documents("\"$HOME/..\"").has_value());
    CHECK(desktop.documents("\"$HOME/Far\"") == desktop.user / "Far");
    CHECK(desktop.documents("\"" + (tmp / "user2") + "\"") == tmp / "user2");
}

TEST_CASE("a folder that is or contains this instance's home shares nothing") {
    const Desktop desktop;
    const auto home = makeFolder(desktop.user / "Korvane/Work");
    makeLink(desktop.user / "Alias", "Korvane");
    makeLink(desktop.user / "Documents", "Korvane/Work");
    for (const std::string place :
         {"Korvane", "Korvane/Work", "Alias", "Alias/Work", "Documents"}) {
        CAPTURE(place);
        desktop.set("XDG_DOCUMENTS_DIR=\"$HOME/" + place + "\"\n");
        CHECK_FALSE(UserFolders(desktop.user.places(), home).find("Documents").has_value());
    }
    desktop.set("XDG_DOCUMENTS_DIR=\"$HOME/Korvane/Wo\"\n");
    CHECK(UserFolders(desktop.user.places(), home).find("Documents") ==
          desktop.user / "Korvane/Wo");
}

TEST_CASE("a folder that is or contains a known instance's home shares nothing") {
    const Desktop desktop;
    auto other = smallestConfig();
    other.instanceHome = "~/Instances/Other";
    writeWrapper(desktop.user / "Applications/Other.app", other);
    makeFolder(desktop.user / "Instances/Other");
    makeLink(desktop.user / "Documents", "Instances");
    for (const std::string place : {"Instances", "Instances/Other", "Documents"}) {
        CAPTURE(place);
        CHECK_FALSE(desktop.documents("\"$HOME/" + place + "\"").has_value());
    }
    CHECK(desktop.documents("\"$HOME/Instances/Another\"") == desktop.user / "Instances/Another");
}

TEST_CASE("a folder that lies in an instance's home shares nothing") {
    const Desktop desktop;
    auto other = smallestConfig();
    other.instanceHome = makeFolder(desktop.tmp / "far/Other");
    writeWrapper(desktop.user / "Applications/Other.app", other);
    makeLink(desktop.user / "Alias", desktop.tmp / "far/Other");
    makeFolder(desktop.tmp / "far/Other/Documents");
    makeFolder(desktop.user / "KorvaneInstances/Any");
    for (const auto& place :
         {desktop.instance + "/Documents", desktop.tmp / "far/Other/Documents",
          desktop.user / "Alias/Documents", desktop.user / "KorvaneInstances/Any/Documents",
          desktop.user / "KorvaneInstances"}) {
        CAPTURE(place);
        CHECK_FALSE(desktop.documents("\"" + place + "\"").has_value());
    }
    CHECK(desktop.documents("\"" + (desktop.tmp / "far/Otherwise") + "\"") ==
          desktop.tmp / "far/Otherwise");
}

TEST_CASE("a home that is gone is no obstacle") {
    const Desktop desktop;
    auto other = smallestConfig();
    other.instanceHome = desktop.tmp / "far/Other";
    writeWrapper(desktop.user / "Applications/Other.app", other);

    CHECK(desktop.documents("\"" + (desktop.tmp / "far") + "\"") == desktop.tmp / "far");
    makeFolder(desktop.tmp / "far/Other");
    CHECK_FALSE(desktop.documents("\"" + (desktop.tmp / "far") + "\"").has_value());
}

TEST_CASE("a setting that names the usual folder needs no look at other instances") {
    const Desktop desktop;
    const auto list = desktop.user / ".local/share/korvane/homes";
    desktop.set("XDG_DOCUMENTS_DIR=\"$HOME/Documents\"\n");
    makeFolder(desktop.user / "Documents");
    CHECK(desktop.find("Documents") == desktop.user / "Documents");
    CHECK_FALSE(isThere(list));

    desktop.set("XDG_DOCUMENTS_DIR=\"$HOME/Dokumente\"\n");
    CHECK(desktop.find("Documents") == desktop.user / "Dokumente");
    CHECK(isThere(list));
}

TEST_CASE("instances that cannot be read or have no absolute home are no obstacle") {
    const Desktop desktop;
    writeWrapper(desktop.user / "Applications/Broken.app", "{");
    makeFolder(desktop.user / "Applications/Empty.app");
    auto relative = smallestConfig();
    for (const std::string home : {"relative", ""}) {
        relative.instanceHome = home;
        writeWrapper(desktop.user / ("Applications/R" + home + ".app"), relative);
    }
    CHECK(desktop.documents("\"$HOME/Dokumente\"") == desktop.user / "Dokumente");
}

TEST_CASE("XDG_CONFIG_HOME is heeded only without CFFIXED_USER_HOME") {
    const TempDir tmp;
    writeFile(tmp / "config/user-dirs.dirs", "XDG_DOCUMENTS_DIR=\"/srv/from the variable\"\n");
    const ScopedVariable config("XDG_CONFIG_HOME", tmp / "config");
    {
        const ScopedVariable without("CFFIXED_USER_HOME", std::nullopt);
        const ScopedVariable data("XDG_DATA_HOME", tmp / "data"); // a list is made there
        CHECK(UserFolders(UserPlaces::ofThisProcess(), tmp / "instance").find("Documents") ==
              "/srv/from the variable");
    }
    const OwnUserHome user(tmp);
    CHECK(UserFolders(UserPlaces::ofThisProcess(), tmp / "instance").find("Documents") ==
          user / "Documents");
    writeFile(user / ".config/user-dirs.dirs", "XDG_DOCUMENTS_DIR=\"/srv/below the home\"\n");
    CHECK(UserFolders(UserPlaces::ofThisProcess(), tmp / "instance").find("Documents") ==
          "/srv/below the home");
}

TEST_CASE("settings that are there but cannot be read share nothing") {
    const Desktop desktop;
    makeFolder(desktop.user / ".config/user-dirs.dirs");
    CHECK_FALSE(desktop.find("Documents").has_value());
    CHECK(UserFolders::allSet(desktop.user.places()).empty());
}

TEST_CASE("the settings of a user whose .config is a file are missing") {
    const Desktop desktop;
    writeFile(desktop.user / ".config");
    CHECK(desktop.find("Documents") == desktop.user / "Documents");
}
