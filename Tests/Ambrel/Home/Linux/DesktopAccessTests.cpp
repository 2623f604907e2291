#include "Ambrel/Launch/InstanceLauncher.h"
#include "Support/Builders.h"
#include "Support/Environment.h"
#include "Support/Expect.h"
#include "Support/Launch.h"
#include "Support/Programs.h"

#include <sys/stat.h>

using namespace ambrel;
using namespace korvane::test;

namespace {

const Strings sessionPlaces{".config/ibus/bus",
                            ".local/share/fonts",
                            ".fonts",
                            ".config/fontconfig",
                            ".themes",
                            ".icons",
                            ".local/share/themes",
                            ".local/share/icons"};
const std::string trash = ".local/share/Trash";

Strings allPlaces() {
    auto places = sessionPlaces;
    places.push_back(trash);
    return places;
}

void linkFor(const UserHome& user, const Path& home) {
    InstanceLauncher::ensureDesktopAccess(home, user.places());
    InstanceLauncher::ensureSharedTrash(home, user.places());
}

/// A user who has something at each place, and the empty home of an instance.
struct Homes {
    Homes() : user(tmp), home(makeFolder(tmp / "instance")) {
        for (const auto& place : allPlaces()) writeFile(user / place + "/own", place);
    }

    void link() const { link(home); }
    void link(const Path& instance) const { linkFor(user, instance); }

    TempDir tmp;
    UserHome user;
    Path home;
};

/// An application of a program that ends at once.
InstanceConfig appConfig(const Homes& homes) {
    AppBundleBuilder(homes.tmp / "App.app").identifier("org.example.app").write();
    copyProgram("/bin/true", homes.tmp / "App.app/Contents/MacOS/App");
    auto config = smallestConfig();
    config.targetAppPath = homes.tmp / "App.app";
    config.instanceHome = homes.home;
    return config;
}

void launch(const InstanceConfig& config, const UserHome& user) {
    auto child = start(config, user.places(), {.codesign = "/nonexistent"});
    child.waitUntilExit();
    CHECK(child.terminationStatus() == 0);
}

} // namespace

TEST_CASE("what belongs to the user's session is linked to the user's own") {
    const Homes homes;

    homes.link();

    for (const auto& place : allPlaces()) {
        CAPTURE(place);
        CHECK(linkText(homes.home + "/" + place) == homes.user / place);
    }
    for (const auto* folder : {".config", ".config/ibus", ".local", ".local/share"}) {
        CHECK(modeOf(homes.home + "/" + folder) == 0700);
    }
    const auto after = snapshot(homes.tmp.path());
    homes.link();
    CHECK(snapshot(homes.tmp.path()) == after);
}

TEST_CASE("where the user has nothing to link to nothing at all is made") {
    const TempDir tmp;
    const UserHome user(tmp);
    const auto home = makeFolder(tmp / "instance");
    makeLink(user / ".themes", tmp / "nowhere");

    InstanceLauncher::ensureDesktopAccess(home, user.places());

    CHECK(namesIn(home).empty());
    CHECK(namesIn(user.path()) == Strings{".themes"});
}

TEST_CASE("a planted link at a link's own place stays and what it leads to is not touched") {
    const Homes homes;
    makeFolder(homes.tmp / "victim");
    for (const auto& place : allPlaces()) makeLink(homes.home + "/" + place, homes.tmp / "victim");
    const auto before = snapshot(homes.tmp.path());

    homes.link();

    CHECK(snapshot(homes.tmp.path()) == before);
}

TEST_CASE("a planted link on the way to a place is not passed") {
    // What stands in the user's Documents must neither go nor be joined by anything.
    for (const std::string way : {".config", ".local", ".local/share", ".config/ibus"}) {
        CAPTURE(way);
        const Homes homes;
        const auto documents = makeFolder(homes.user / "Documents");
        for (const std::string name : {"fonts", "themes", "icons", "Trash", "fontconfig", "bus"}) {
            writeFile(documents + "/" + name, "mine");
        }
        makeFolder(documents + "/share");
        makeFolder(documents + "/ibus");
        makeLink(homes.home + "/" + way, documents);
        const auto before = snapshot(homes.user.path());

        homes.link();

        CHECK(snapshot(homes.user.path()) == before);
        CHECK(linkText(homes.home + "/" + way) == documents);
        for (const auto& place : allPlaces()) {
            const bool isBehind = beginsWith(place, way + "/");
            CAPTURE(place);
            CHECK(isLink(homes.home + "/" + place) == !isBehind);
        }
    }
}

TEST_CASE("a planted link to an empty folder or to nowhere on the way is not passed") {
    for (const std::string way : {".config", ".local", ".local/share", ".config/ibus"}) {
        for (const bool isDangling : {false, true}) {
            CAPTURE(way);
            const Homes homes;
            const auto victim = homes.tmp / "victim";
            if (!isDangling) makeFolder(victim);
            makeLink(homes.home + "/" + way, victim);

            homes.link();

            CHECK(linkText(homes.home + "/" + way) == victim);
            if (isDangling) CHECK_FALSE(isThere(victim));
            if (!isDangling) CHECK(namesIn(victim).empty());
        }
    }
}

TEST_CASE("a plain file or pipe at a place or on the way to it is never replaced") {
    for (const std::string at : {".config", ".local", ".local/share", ".config/ibus"}) {
        const Homes homes;
        writeFile(homes.home + "/" + at, "kept");
        homes.link();
        CAPTURE(at);
        CHECK(readFile(homes.home + "/" + at) == "kept");
    }
    const Homes homes;
    for (const auto& place : allPlaces()) writeFile(homes.home + "/" + place, "kept");
    const auto before = snapshot(homes.tmp.path());
    homes.link();
    CHECK(snapshot(homes.tmp.path()) == before);

    const Homes withPipe;
    REQUIRE(::mkfifo((withPipe.home + "/.themes").c_str(), 0600) == 0);
    withPipe.link();
    CHECK_FALSE(isLink(withPipe.home + "/.themes"));
}

TEST_CASE("a folder with an entry stays and an empty one is replaced by the link") {
    for (const auto& place : allPlaces()) {
        CAPTURE(place);
        const Homes homes;
        writeFile(homes.home + "/" + place + "/.hidden", "kept");
        homes.link();
        CHECK(isRealFolder(homes.home + "/" + place));
        CHECK(readFile(homes.home + "/" + place + "/.hidden") == "kept");

        const Homes empty;
        makeFolder(empty.home + "/" + place);
        empty.link();
        CHECK(linkText(empty.home + "/" + place) == empty.user / place);
    }
}

TEST_CASE("folders on the way that exist keep their mode") {
    const Homes homes;
    makeFolder(homes.home + "/.config");
    setMode(homes.home + "/.config", 0755);

    homes.link();

    CHECK(modeOf(homes.home + "/.config") == 0755);
    CHECK(modeOf(homes.home + "/.config/ibus") == 0700);
}

TEST_CASE("a home that is or contains the user's own gets none of these links") {
    const TempDir tmp;
    const UserHome user(tmp, "outer/user");
    for (const auto& place : sessionPlaces) makeFolder(user / place); // empty: replaceable
    makeLink(tmp / "alias", user.path());
    const auto before = snapshot(tmp.path());

    for (const auto& home : {user.path(), user.path() + "/", tmp / "alias", tmp / "outer",
                             tmp.path(), user / "../../outer/user"}) {
        CAPTURE(home);
        linkFor(user, home);
        CHECK(snapshot(tmp.path()) == before);
    }
}

TEST_CASE("an unusable home is passed over") {
    const Homes homes;
    writeFile(homes.tmp / "file");
    const auto before = snapshot(homes.tmp.path());
    const WorkingDirectory there(homes.tmp.path());
    for (const auto& home : {std::string(), homes.tmp / "missing", homes.tmp / "file",
                             homes.home + std::string("\0x", 2)}) {
        homes.link(home);
        CHECK(snapshot(homes.tmp.path()) == before);
    }
}

TEST_CASE("nothing is linked onto itself when the user's variable leads into the instance") {
    const TempDir tmp;
    const auto home = makeFolder(tmp / "instance");
    makeFolder(home + "/.config/fontconfig");
    const ScopedVariable own("CFFIXED_USER_HOME", std::nullopt);
    const ScopedVariable config("XDG_CONFIG_HOME", home + "/.config");
    const ScopedVariable data("XDG_DATA_HOME", tmp / "data");

    InstanceLauncher::ensureDesktopAccess(home, UserPlaces::ofThisProcess());

    CHECK(isRealFolder(home + "/.config/fontconfig"));
}

TEST_CASE("the user's base directories are heeded without CFFIXED_USER_HOME") {
    const TempDir tmp;
    const ScopedVariable own("CFFIXED_USER_HOME", std::nullopt);
    const ScopedVariable config("XDG_CONFIG_HOME", tmp / "config");
    const ScopedVariable data("XDG_DATA_HOME", tmp / "data");
    const auto home = makeFolder(tmp / "instance");
    makeFolder(tmp / "config/ibus/bus");
    makeFolder(tmp / "data/fonts");

    InstanceLauncher::ensureDesktopAccess(home, UserPlaces::ofThisProcess());

    CHECK(linkText(home + "/.config/ibus/bus") == tmp / "config/ibus/bus");
    CHECK(linkText(home + "/.local/share/fonts") == tmp / "data/fonts");
}

TEST_CASE("a user without trash gets one that is closed to others") {
    const TempDir tmp;
    const UserHome user(tmp);
    const auto home = makeFolder(tmp / "instance");

    InstanceLauncher::ensureSharedTrash(home, user.places());

    CHECK(linkText(home + "/" + trash) == user / trash);
    CHECK(namesIn(user / trash) == Strings{"files", "info"});
    for (const auto* folder : {".local", ".local/share", ".local/share/Trash",
                               ".local/share/Trash/files", ".local/share/Trash/info"}) {
        CHECK(modeOf(user / folder) == 0700);
    }
}

TEST_CASE("a trash that the user has is left as it is") {
    const TempDir tmp;
    const UserHome user(tmp);
    const auto home = makeFolder(tmp / "instance");
    makeFolder(tmp / "disk");
    makeFolder(user / ".local/share");
    makeLink(user / trash, tmp / "disk");

    InstanceLauncher::ensureSharedTrash(home, user.places());

    CHECK(linkText(home + "/" + trash) == user / trash);
    CHECK(namesIn(tmp / "disk").empty());
}

TEST_CASE("the user gets no trash where the instance keeps one of its own") {
    const TempDir tmp;
    const UserHome user(tmp);
    writeFile(tmp / "full/" + trash + "/files/x");
    writeFile(tmp / "file/" + trash);
    makeLink(tmp / "link/" + trash, tmp / "nowhere");
    makeLink(tmp / "way/.local", tmp / "nowhere");
    for (const auto* home : {"full", "file", "link", "way"}) {
        InstanceLauncher::ensureSharedTrash(tmp / home, user.places());
    }
    CHECK(namesIn(user.path()).empty());
    CHECK(readFile(tmp / "full/" + trash + "/files/x").empty());
}

TEST_CASE("an account whose home does not exist gets neither home nor trash") {
    const TempDir tmp;
    const ScopedVariable nobody("CFFIXED_USER_HOME", tmp / "nobody");
    const auto home = makeFolder(tmp / "instance");

    InstanceLauncher::ensureSharedTrash(home, UserPlaces::ofThisProcess());

    CHECK(namesIn(tmp.path()) == Strings{"instance"});
    CHECK(namesIn(home).empty());
}

TEST_CASE("an app shortcut has all links before it starts and the trash only when it shares") {
    for (const bool shares : {true, false}) {
        CAPTURE(shares);
        const Homes homes;
        auto config = appConfig(homes);
        config.instanceHome = homes.tmp / "new/home"; // made by the launch itself
        config.shareUserFolders = shares;

        launch(config, homes.user);

        for (const auto& place : sessionPlaces) {
            CHECK(linkText(config.instanceHome + "/" + place) == homes.user / place);
        }
        CHECK(isLink(config.instanceHome + "/" + trash) == shares);
    }
}

TEST_CASE("the operation called directly links the session but never the trash") {
    const Homes homes;
    const auto config = appConfig(homes);

    auto child = InstanceLauncher::launch(config.targetAppPath, homes.home, config.strategy, {}, {},
                                          homes.user.places(), processEnvironment(),
                                          {.codesign = "/nonexistent"});
    child.waitUntilExit();

    CHECK(linkText(homes.home + "/.themes") == homes.user / ".themes");
    CHECK_FALSE(isThere(homes.home + "/" + trash));
}

TEST_CASE("a command gets none of these links") {
    const Homes homes;

    launch(commandConfig(homes.home, "/bin/true"), homes.user);

    CHECK(namesIn(homes.home) == Strings{"korvane-instance.log"});
}

TEST_CASE("an app whose home cannot be changed starts without the links") {
    const Homes homes;
    const auto config = appConfig(homes);
    makeFolder(homes.home + "/.config");
    giveToOrdinaryUser(homes.tmp.path());
    setMode(homes.home, 0555);
    setMode(homes.home + "/.config", 0555);

    const auto said = asOrdinaryUser([&] {
        auto child = start(config, homes.user.places(), {.codesign = "/nonexistent"});
        child.waitUntilExit();
        return std::to_string(child.terminationStatus());
    });

    setMode(homes.home, 0755);
    CHECK(said == "0");
    CHECK(namesIn(homes.home) == Strings{".config"});
    CHECK(namesIn(homes.home + "/.config").empty());
}
