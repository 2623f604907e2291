#include "Ambrel/Launch/InstanceLauncher.h"
#include "Ambrel/Platform/GuardedFolder.h"
#include "Support/Environment.h"
#include "Support/Sweep.h"

using namespace ambrel;
using namespace korvane::test;
using faults::Failure;

namespace {

const Strings places{".config/ibus/bus", ".local/share/fonts", ".fonts", ".config/fontconfig",
                     ".themes",          ".local/share/Trash"};

/// A home with something at most places, and a user who has something at all of them.
struct HostileHome {
    HostileHome() : user(tmp), home(makeFolder(tmp / "instance")) {
        for (const auto& place : places) writeFile(user / place + "/own", place);
        for (const std::string name : {"bus", "fontconfig"}) {
            writeFile(user / "Documents/" + name, "mine");
        }
        makeLink(home + "/.config", user / "Documents");
        writeFile(home + "/.fonts", "a file");
        writeFile(home + "/.themes/own", "a theme");
        makeFolder(home + "/.local/share/fonts");
        before = contentsBelow({tmp.path()});
        ofUser = snapshot(user.path());
    }

    TempDir tmp;
    UserHome user;
    Path home;
    std::multiset<std::string> before;
    std::multiset<std::string> ofUser;
};

/// A user who has no trash yet.
struct NoTrash {
    NoTrash() : user(tmp), home(makeFolder(tmp / "instance")) {}

    TempDir tmp;
    UserHome user;
    Path home;
};

/// A user whose own home is the instance's, or lies in it.
struct OwnHome {
    OwnHome() : user(tmp, "outer/user") {
        for (const auto& place : places) makeFolder(user / place); // empty: replaceable
        makeLink(tmp / "alias", user.path());
        makeLink(tmp / "outer-alias", "outer");
        before = snapshot(tmp.path());
    }

    TempDir tmp;
    UserHome user;
    std::multiset<std::string> before;
};

/// A folder into which a file is put.
struct Put {
    TempDir tmp;
    std::string bytes = std::string(70000, 'x');
    bool isPut = false;
    bool hasThrown = false;
};

} // namespace

TEST_CASE("linking the session and the trash loses nothing whichever call fails") {
    sweep<HostileHome>(
        [](HostileHome& scene) {
            InstanceLauncher::ensureDesktopAccess(scene.home, scene.user.places());
            InstanceLauncher::ensureSharedTrash(scene.home, scene.user.places());
        },
        [](HostileHome& scene, const Failure&) {
            checkNothingLost(scene.before, {scene.tmp.path()});
            CHECK(snapshot(scene.user.path()) == scene.ofUser);
            CHECK(linkText(scene.home + "/.config") == scene.user / "Documents");
            CHECK(isRealFolder(scene.home + "/.themes"));
        });
}

TEST_CASE("making the user's trash is closed to others and swallowed whichever call fails") {
    sweep<NoTrash>(
        [](NoTrash& scene) {
            InstanceLauncher::ensureSharedTrash(scene.home, scene.user.places());
        },
        [](NoTrash& scene, const Failure&) {
            checkOnlyNames(scene.user.path(), {".local"});
            const auto trash = scene.user / ".local/share/Trash";
            if (isThere(trash)) CHECK((modeOf(trash) & 077) == 0);
            const auto link = scene.home + "/.local/share/Trash";
            if (isThere(link)) CHECK(linkText(link) == trash);
        });
}

TEST_CASE("a home that holds the user's own gets no links whichever call fails") {
    sweep<OwnHome>(
        [](OwnHome& scene) {
            for (const auto& home :
                 {scene.user.path(), scene.tmp / "alias", scene.tmp / "outer-alias"}) {
                InstanceLauncher::ensureDesktopAccess(home, scene.user.places());
                InstanceLauncher::ensureSharedTrash(home, scene.user.places());
            }
        },
        [](OwnHome& scene, const Failure&) { CHECK(snapshot(scene.tmp.path()) == scene.before); });
}

TEST_CASE("a file is put without replacing where the file system has no exclusive rename") {
    std::string failedCall;
    for (long failing = 1; failedCall != "renameat2"; ++failing) {
        const TempDir tmp;
        const auto folder = GuardedFolder::open(tmp.path());
        bool isPut = false;
        faults::arm(failing, {EINVAL, false});
        try {
            isPut = folder.putFile("file", "whole", 0600);
        } catch (const FileError&) {
            isPut = false;
        }
        failedCall = faults::disarm().failedCall;
        REQUIRE_FALSE(failedCall.empty());
        if (failedCall != "renameat2") continue;
        CHECK(isPut);
        CHECK(readFile(tmp / "file") == "whole");
        CHECK(namesIn(tmp.path()) == Strings{"file"});
    }
}

TEST_CASE("a file is put complete or not at all whichever call fails") {
    sweep<Put>(
        [](Put& scene) {
            try {
                const auto folder = GuardedFolder::open(scene.tmp.path()).folder("a/b", 0700);
                scene.isPut = folder.putFile("file", scene.bytes, 0644);
            } catch (const FileError&) {
                scene.hasThrown = true;
            }
        },
        [](Put& scene, const Failure& failure) {
            const auto file = scene.tmp / "a/b/file";
            CHECK(scene.isPut != scene.hasThrown);
            CHECK(isThere(file) == scene.isPut);
            if (scene.isPut) CHECK(readFile(file) == scene.bytes);
            if (!failure.lasting) checkOnlyNames(scene.tmp / "a/b", {"file"});
        });
}
