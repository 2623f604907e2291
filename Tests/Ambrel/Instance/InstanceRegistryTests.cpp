#include "Ambrel/Instance/InstanceRegistry.h"

#include "Ambrel/Launch/InstanceLauncher.h"
#include "Ambrel/Platform/FileError.h"
#include "Support/Builders.h"
#include "Support/Environment.h"
#include "Support/Expect.h"
#include "Support/Programs.h"

#include <unordered_set>

using namespace ambrel;
using namespace korvane::test;

namespace {

Path writeInstance(const Path& bundle, const std::string& name,
                   const std::string& home = "/nonexistent/home") {
    auto config = smallestConfig();
    config.displayName = name;
    config.instanceHome = home;
    return writeWrapper(bundle, config);
}

InstanceRecord recordOf(const Path& bundle) {
    const auto record = InstanceRegistry(nobody()).recordFor(bundle);
    REQUIRE(record.has_value());
    return *record;
}

Strings namesOf(const std::vector<InstanceRecord>& records) {
    Strings names;
    for (const auto& record : records) names.push_back(record.config.displayName);
    return names;
}

Strings listedIn(const std::vector<Path>& folders) {
    return namesOf(InstanceRegistry(nobody(), folders).list());
}

} // namespace

TEST_CASE("an empty list of folders lists nothing and an absent one the user's Applications only") {
    const TempDir tmp;
    const UserHome user(tmp);
    writeInstance(user / "Applications/A.app", "A");
    writeInstance(user / "KorvaneInstances/B.app", "B");

    CHECK(listedIn({}).empty());
    CHECK(namesOf(InstanceRegistry(user.places()).list()) == Strings{"A"});
    CHECK(InstanceRegistry(user.places()).searchDirs == Strings{user / "Applications"});
    CHECK(InstanceRegistry::defaultSearchDirs(user.places()) == Strings{user / "Applications"});
}

TEST_CASE("a folder called Notes APP in capitals is not listed but can be looked up") {
    const TempDir tmp;
    writeInstance(tmp / "Notes.APP", "Notes");
    writeInstance(tmp / "plain", "Plain");
    writeInstance(tmp / ".app", "Dot");

    CHECK(listedIn({tmp.path()}).empty());
    CHECK(recordOf(tmp / "Notes.APP").config.displayName == "Notes");
    CHECK(recordOf((tmp / "plain") + "/").config.displayName == "Plain");
}

TEST_CASE("instances called alpha and Beta list as alpha, Beta") {
    const TempDir tmp;
    writeInstance(tmp / "1.app", "Beta");
    writeInstance(tmp / "2.app", "alpha");
    writeInstance(tmp / "3.app", "Charlie");

    CHECK(listedIn({tmp.path()}) == Strings{"alpha", "Beta", "Charlie"});
}

TEST_CASE("a wrapper inside a subfolder of a search folder is not found") {
    const TempDir tmp;
    writeInstance(tmp / "sub/A.app", "A");
    writeInstance(tmp / "B.app/C.app", "C");

    CHECK(listedIn({tmp.path()}).empty());
    CHECK(listedIn({tmp / "sub"}) == Strings{"A"});
}

TEST_CASE("removing with data an instance whose home is the user's own removes the bundle only") {
    const TempDir tmp;
    const UserHome user(tmp);
    writeFile(user / "Documents/letter", "kept");
    const auto before = snapshot(user.path());
    for (const std::string& home : {std::string("~"), std::string("~/"), user.path()}) {
        CAPTURE(home);
        const auto bundle = writeInstance(tmp / "out/A.app", "A", home);

        InstanceRegistry(user.places()).remove(recordOf(bundle), UserData::remove);

        CHECK_FALSE(isThere(bundle));
        CHECK(snapshot(user.path()) == before);
    }
}

TEST_CASE("the user's own home is never removed, however it or the instance's home is spelled") {
    const TempDir tmp;
    const UserHome user(tmp);
    writeFile(user / "Documents/letter", "kept");
    const auto before = snapshot(user.path());
    for (const std::string& own : {user.path(), user.path() + "/", tmp / "alias/user"}) {
        for (const std::string& home : {std::string("~"), user.path(), user.path() + "/",
                                        user / "../user/.", tmp / "alias/user", tmp / "alias/"}) {
            CAPTURE(own);
            CAPTURE(home);
            auto places = user.places();
            places.home = own;
            // A home that is itself a link is removed as such.
            if (!isThere(tmp / "alias")) makeLink(tmp / "alias", tmp.path());
            const auto bundle = writeInstance(tmp / "out/A.app", "A", home);

            InstanceRegistry(places).remove(recordOf(bundle), UserData::remove);

            CHECK_FALSE(isThere(bundle));
            CHECK(snapshot(user.path()) == before);
        }
    }
    const auto bundle = writeInstance(tmp / "out/A.app", "A", tmp.path());
    InstanceRegistry(user.places()).remove(recordOf(bundle), UserData::remove);
    CHECK(snapshot(user.path()) == before);
}

TEST_CASE("removing a bundle that is already gone, without data, succeeds and does nothing") {
    const TempDir tmp;
    const auto home = tmp / "home";
    writeFile(home + "/data", "kept");
    const auto bundle = writeInstance(tmp / "out/A.app", "A", home);
    const auto record = recordOf(bundle);
    InstanceRegistry(nobody()).remove(record, UserData::keep);
    CHECK(namesIn(tmp / "out").empty());
    const auto before = snapshot(tmp.path());

    InstanceRegistry(nobody()).remove(record, UserData::keep);

    CHECK(snapshot(tmp.path()) == before);
    InstanceRegistry(nobody()).remove(record, UserData::remove); // the data still goes when asked
    CHECK_FALSE(isThere(home));
}

TEST_CASE("after an update the file is pretty-printed with its keys in sorted order") {
    const TempDir tmp;
    const auto bundle = writeWrapper(
        tmp / "A.app",
        R"({"url":"a/b","zzz":1,"instanceHome":"/h","displayName":"A","bundleId":"b"})");
    const auto record = recordOf(bundle);

    InstanceRegistry(nobody()).update(record,
                                      [](InstanceConfig& config) { config.displayName = "B"; });

    const auto after = recordOf(bundle);
    CHECK(after.config.displayName == "B");
    CHECK(after.config.url == "a/b");
    const auto text = readFile(bundle + "/Contents/Resources/instance.json");
    CHECK(text == after.config.encode());
    CHECK(beginsWith(text, "{\n  \"bundleId\": \"b\",\n  \"commandArgs\": [],\n"));
    CHECK(contains(text, "\"url\": \"a\\/b\""));
    CHECK(record.config.displayName == "A");
}

TEST_CASE("records of one bundle with different configurations are equal and hash alike") {
    const InstanceRecord first{"/a/A.app", smallestConfig()};
    const InstanceRecord second{"/a/A.app", fullConfig()};
    const InstanceRecord other{"/a/B.app", smallestConfig()};
    const std::hash<InstanceRecord> hash;

    CHECK(first == second);
    CHECK(hash(first) == hash(second));
    CHECK_FALSE(first == other);
    CHECK(first.id() == "/a/A.app");
    CHECK(std::unordered_set<InstanceRecord>{first, second, other}.size() == 2);
}

TEST_CASE("instances whose names compare equal keep the order in which they were found") {
    const TempDir tmp;
    writeInstance(tmp / "one/x.app", "Mail");
    writeInstance(tmp / "two/x.app", "MAIL");
    writeInstance(tmp / "three/x.app", "mail");

    CHECK(listedIn({tmp / "one", tmp / "two", tmp / "three"}) == Strings{"Mail", "MAIL", "mail"});
    CHECK(listedIn({tmp / "three", tmp / "two", tmp / "one"}) == Strings{"mail", "MAIL", "Mail"});
}

TEST_CASE("many instances of one name keep the order in which they were found") {
    const TempDir tmp;
    std::vector<Path> folders;
    Strings expected;
    for (const char letter : std::string("qwertyuiopasdfghjklzxcvbnmQWERTYUIOP")) {
        folders.push_back(tmp / std::string("in ") + letter);
        expected.push_back(writeInstance(folders.back() + "/x.app", "Mail"));
    }

    Strings found;
    for (const auto& record : InstanceRegistry(nobody(), folders).list()) {
        found.push_back(record.bundleURL);
    }

    CHECK(found == expected);
}

TEST_CASE("nothing is listed once only: a folder twice, or a link, gives the instance twice") {
    const TempDir tmp;
    writeInstance(tmp / "one/A.app", "A");
    makeLink(tmp / "one/Link.app", "A.app");

    CHECK(listedIn({tmp / "one", tmp / "one"}) == Strings{"A", "A", "A", "A"});
}

TEST_CASE("unreadable folders and undecodable bundles are skipped") {
    const TempDir tmp;
    writeInstance(tmp / "good/A.app", "A");
    writeInstance(tmp / "good/.Hidden.app", "Hidden");
    writeWrapper(tmp / "good/Broken.app", R"({"displayName":"x"})");
    writeWrapper(tmp / "good/Deep.app", std::string(100000, '['));
    makeFolder(tmp / "good/Folder.app/Contents/Resources/instance.json");
    makeFolder(tmp / "good/Empty.app");
    writeFile(tmp / "good/File.app");
    writeInstance(tmp / "good/Secret.app", "Secret");
    writeInstance(tmp / "locked/B.app", "B");
    giveToOrdinaryUser(tmp.path());
    setMode(tmp / "good/Secret.app/Contents/Resources/instance.json", 0000);
    setMode(tmp / "locked", 0000);

    const auto said = asOrdinaryUser([&] {
        std::string names;
        for (const auto& name :
             listedIn({tmp / "missing", tmp / "good/File.app", tmp / "locked", "", tmp / "good"})) {
            names += name + " ";
        }
        return names;
    });

    CHECK(said == "A Hidden ");
    CHECK_FALSE(InstanceRegistry(nobody()).recordFor(tmp / "good/Broken.app").has_value());
    CHECK_FALSE(InstanceRegistry(nobody()).recordFor(tmp / "missing").has_value());
    CHECK_FALSE(InstanceRegistry(nobody()).recordFor("").has_value());
}

TEST_CASE("a listed record has the bundle's path and its icon only while that exists") {
    const TempDir tmp;
    const auto bundle = writeInstance(tmp / "A.app", "A");

    const auto records = InstanceRegistry(nobody(), Strings{tmp.path() + "/"}).list();

    REQUIRE(records.size() == 1);
    CHECK(records[0].bundleURL == bundle);
    CHECK_FALSE(records[0].iconURL().has_value());
    writeFile(bundle + "/Contents/Resources/AppIcon.icns");
    CHECK(records[0].iconURL() == bundle + "/Contents/Resources/AppIcon.icns");
}

TEST_CASE("keeping the data removes the bundle alone") {
    const TempDir tmp;
    writeFile(tmp / "home/data", "kept");
    const auto bundle = writeInstance(tmp / "A.app", "A", tmp / "home");

    InstanceRegistry(nobody()).remove(recordOf(bundle), UserData::keep);

    CHECK(namesIn(tmp.path()) == Strings{"home"});
    CHECK(readFile(tmp / "home/data") == "kept");
}

TEST_CASE("the data folder is the stored home with its tilde expanded and nothing else replaced") {
    const TempDir tmp;
    const UserHome user(tmp);
    writeFile(user / "Instances/A/data");
    writeFile(user / "other", "kept");
    const auto bundle = writeInstance(tmp / "A.app", "A", "~/Instances/A");

    InstanceRegistry(user.places()).remove(recordOf(bundle), UserData::remove);

    CHECK(namesIn(user / "Instances").empty());
    CHECK(readFile(user / "other") == "kept");
}

TEST_CASE("an empty or missing home means that no data is removed") {
    const TempDir tmp;
    const WorkingDirectory inside(tmp.path());
    writeFile(tmp / "here", "kept");
    for (const auto* home : {"", "/nonexistent/home"}) {
        const auto bundle = writeInstance(tmp / "A.app", "A", home);
        InstanceRegistry(nobody()).remove(recordOf(bundle), UserData::remove);
        CHECK(namesIn(tmp.path()) == Strings{"here"});
    }
}

TEST_CASE("removing with data leaves the user's linked folders exactly as they were") {
    const TempDir tmp;
    const UserHome user(tmp);
    for (const std::string name : {"Downloads", "Documents", "Desktop", "Library/Keychains"}) {
        writeFile(user / name + "/sub/file", name);
        writeFile(user / name + "/.DS_Store", name);
    }
    const auto home = tmp / "instance";
    InstanceLauncher::ensureSharedUserFolders(home, user.places());
    InstanceLauncher::ensureKeychainAccess(home, user.places());
    makeLink(home + "/deep/er/slashed", user.path() + "/");
    writeFile(home + "/own/data");
    REQUIRE(isLink(home + "/Downloads"));
    REQUIRE(isLink(home + "/Library/Keychains"));
    const auto before = snapshot(user.path());
    const auto bundle = writeInstance(tmp / "A.app", "A", home);

    InstanceRegistry(user.places()).remove(recordOf(bundle), UserData::remove);

    CHECK_FALSE(isThere(home));
    CHECK(snapshot(user.path()) == before);
}

TEST_CASE("a home that is itself a link, with a trailing slash, is removed and not followed") {
    for (const std::string slash : {"", "/", "///"}) {
        const TempDir tmp;
        const UserHome user(tmp);
        writeFile(user / "Documents/letter", "kept");
        makeLink(tmp / "home", user.path());
        const auto bundle = writeInstance(tmp / "A.app", "A", (tmp / "home") + slash);
        const auto before = snapshot(user.path());
        CAPTURE(slash);

        InstanceRegistry(user.places()).remove(recordOf(bundle), UserData::remove);

        CHECK_FALSE(isThere(bundle));
        CHECK_FALSE(isThere(tmp / "home"));
        CHECK(snapshot(user.path()) == before);
    }
}

TEST_CASE("a bundle that is a link, with a trailing slash, is removed and not followed") {
    const TempDir tmp;
    const auto real = writeInstance(tmp / "real/A.app", "A");
    makeLink(tmp / "Link.app", real);

    InstanceRegistry(nobody()).remove(recordOf((tmp / "Link.app") + "/"), UserData::keep);

    CHECK_FALSE(isThere(tmp / "Link.app"));
    CHECK(recordOf(real).config.displayName == "A");
}

TEST_CASE("a bundle that cannot be removed fails and leaves the data untouched") {
    const TempDir tmp;
    writeFile(tmp / "home/data", "kept");
    const auto bundle = writeInstance(tmp / "out/A.app", "A", tmp / "home");
    giveToOrdinaryUser(tmp.path());
    const auto record = recordOf(bundle);
    setMode(tmp / "out", 0555);

    const auto said = asOrdinaryUser([&]() -> std::string {
        InstanceRegistry(nobody()).remove(record, UserData::remove);
        return "removed";
    });

    CHECK(beginsWith(said, "threw: Cannot "));
    CHECK(contains(said, "Permission denied"));
    CHECK(readFile(tmp / "home/data") == "kept");
}

TEST_CASE("data that cannot be removed is no error and the bundle is gone") {
    const TempDir tmp;
    writeFile(tmp / "locked/home/data");
    const auto bundle = writeInstance(tmp / "out/A.app", "A", tmp / "locked/home");
    giveToOrdinaryUser(tmp.path());
    const auto record = recordOf(bundle);
    setMode(tmp / "locked", 0555);

    const auto said = asOrdinaryUser([&]() -> std::string {
        InstanceRegistry(nobody()).remove(record, UserData::remove);
        return "returned";
    });

    CHECK(said == "returned");
    CHECK_FALSE(isThere(bundle));
    CHECK(isThere(tmp / "locked/home"));
}

TEST_CASE("an update writes over the file in place and changes nothing else in the bundle") {
    const TempDir tmp;
    const auto bundle = writeInstance(tmp / "A.app", "A long name that will be cut");
    writeFile(bundle + "/Contents/Info.plist", "plist");
    const auto file = bundle + "/Contents/Resources/instance.json";
    const auto inode = statusOf(file).st_ino;

    InstanceRegistry(nobody()).update(recordOf(bundle), [](InstanceConfig& config) {
        config.displayName = "x";
        config.bundleId = "y";
    });

    CHECK(statusOf(file).st_ino == inode);
    CHECK(namesIn(bundle + "/Contents/Resources") == Strings{"instance.json"});
    CHECK(readFile(bundle + "/Contents/Info.plist") == "plist");
    CHECK(recordOf(bundle).config.displayName == "x");
}

TEST_CASE("an update edits what the record holds, even when the file has changed since") {
    const TempDir tmp;
    const auto bundle = writeInstance(tmp / "A.app", "old");
    const auto stale = recordOf(bundle);
    writeInstance(bundle, "newer");

    InstanceRegistry(nobody()).update(stale, [](InstanceConfig& config) { config.url = "u"; });

    CHECK(recordOf(bundle).config.displayName == "old");
    CHECK(recordOf(bundle).config.url == "u");
}

TEST_CASE("an update that cannot be encoded or written is not reported and leaves the file") {
    const TempDir tmp;
    const auto bundle = writeInstance(tmp / "A.app", "A");
    const auto record = recordOf(bundle);
    const auto file = bundle + "/Contents/Resources/instance.json";
    const auto before = readFile(file);

    InstanceRegistry(nobody()).update(record, [](InstanceConfig& config) { config.url = "\xff"; });
    CHECK(readFile(file) == before);

    InstanceRegistry(nobody()).update({tmp / "missing.app", record.config}, [](InstanceConfig&) {});
    CHECK(namesIn(tmp.path()) == Strings{"A.app"});

    giveToOrdinaryUser(tmp.path());
    setMode(file, 0444);
    const auto said = asOrdinaryUser([&]() -> std::string {
        InstanceRegistry(nobody()).update(record, [](InstanceConfig& config) { config.url = "u"; });
        return "returned";
    });
    CHECK(said == "returned");
    CHECK(readFile(file) == before);
}
