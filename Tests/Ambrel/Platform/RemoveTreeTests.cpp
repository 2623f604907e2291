#include "Ambrel/Platform/FileSystem.h"

#include "Support/Environment.h"
#include "Support/Expect.h"
#include "Support/Programs.h"
#include "Support/RichTree.h"

#include <fcntl.h>
#include <unistd.h>

using namespace ambrel;
using namespace korvane::test;

namespace {

/// A folder chain deeper than any path may be long; returns when it stands.
void makeDeepFolders(const Path& top, int levels) {
    makeFolder(top);
    int current = ::open(top.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    for (int level = 0; level < levels; ++level) {
        REQUIRE(::mkdirat(current, "level-of-the-tree", 0755) == 0);
        const int next = ::openat(current, "level-of-the-tree", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        ::close(current);
        REQUIRE(next >= 0);
        current = next;
    }
    ::close(current);
}

} // namespace

TEST_CASE("a recursive remove never goes through a link, with or without a trailing slash") {
    const TempDir tmp;
    writeFile(tmp / "outside/file", "kept");
    makeLink(tmp / "tree/inner", tmp / "outside");
    makeLink(tmp / "tree/sub/inner", tmp / "outside/");
    makeLink(tmp / "plain", tmp / "outside");
    makeLink(tmp / "slashed", tmp / "outside");
    makeLink(tmp / "slashes", tmp / "outside");

    fileSystem::removeTree(tmp / "tree");
    fileSystem::removeTree(tmp / "plain");
    fileSystem::removeTree(tmp / "slashed/");
    fileSystem::removeTree(tmp / "slashes///");

    CHECK(namesIn(tmp.path()) == Strings{"outside"});
    CHECK(readFile(tmp / "outside/file") == "kept");
}

TEST_CASE("a recursive remove takes every kind of item and a tree deeper than a path is long") {
    const TempDir tmp;
    makeRichTree(tmp / "rich");
    makeDeepFolders(tmp / "deep", 1500);
    writeFile(tmp / "file");

    fileSystem::removeTree(tmp / "rich/");
    fileSystem::removeTree(tmp / "file");
    fileSystem::removeTree(tmp / "deep");

    CHECK(namesIn(tmp.path()).empty());
    expectThrow<FileError>([&] { fileSystem::removeTree(tmp / "missing"); });
}

TEST_CASE("a recursive remove needs neither a descriptor nor a frame for each level") {
    const TempDir tmp;
    const Path start = fileSystem::currentDirectory();
    makeFolder(tmp / "top");
    REQUIRE(::chdir((tmp / "top").c_str()) == 0);
    for (int level = 0; level < 3000; ++level) {
        REQUIRE(::mkdir("d", 0700) == 0);
        REQUIRE(::symlink("..", "up") == 0);
        REQUIRE(::chdir("d") == 0);
    }
    REQUIRE(::chdir(start.c_str()) == 0);

    fileSystem::removeTree(tmp / "top");

    CHECK_FALSE(isThere(tmp / "top"));
}

TEST_CASE("a recursive remove without permission fails with the system's reason") {
    const TempDir tmp;
    writeFile(tmp / "locked/tree/sub/file");
    giveToOrdinaryUser(tmp.path());
    setMode(tmp / "locked/tree", 0555);
    setMode(tmp / "locked", 0555);

    const auto said = asOrdinaryUser([&]() -> std::string {
        fileSystem::removeTree(tmp / "locked/tree");
        return "removed";
    });

    CHECK(said == "threw: Cannot remove " + (tmp / "locked/tree") + ": Permission denied");
    CHECK(isRealFolder(tmp / "locked/tree"));
    CHECK(modeOf(tmp / "locked/tree") == 0555);
    CHECK(modeOf(tmp / "locked") == 0555);
}

TEST_CASE("a recursive remove takes the owner's write-protected folders and no other's rights") {
    const TempDir tmp;
    for (const mode_t mode : {0555U, 0500U, 0311U, 0111U, 0400U, 0000U}) {
        CAPTURE(mode);
        writeFile(tmp / "tree/sub/inner/file");
        writeFile(tmp / "outside/file", "kept");
        makeLink(tmp / "tree/sub/link", tmp / "outside");
        giveToOrdinaryUser(tmp.path());
        setMode(tmp / "outside", 0555);
        setMode(tmp / "tree/sub/inner", mode);
        setMode(tmp / "tree/sub", mode);
        setMode(tmp / "tree", mode);

        const auto said = asOrdinaryUser([&]() -> std::string {
            fileSystem::removeTree(tmp / "tree");
            return "removed";
        });

        CHECK(said == "removed");
        CHECK(namesIn(tmp.path()) == Strings{"outside"});
        CHECK(readFile(tmp / "outside/file") == "kept");
        CHECK(modeOf(tmp / "outside") == 0555);
        setMode(tmp / "outside", 0755);
    }
}

TEST_CASE("a recursive remove takes write-protected folders at any depth") {
    const TempDir tmp;
    giveToOrdinaryUser(tmp.path());

    const auto said = asOrdinaryUser([&]() -> std::string {
        Path folder = tmp / "tree";
        std::vector<Path> folders;
        for (int level = 0; level < 250; ++level) {
            folders.push_back(makeFolder(folder));
            folder += "/d";
        }
        for (auto locked = folders.rbegin(); locked != folders.rend(); ++locked) {
            setMode(*locked, 0555);
        }
        fileSystem::removeTree(tmp / "tree");
        return "removed";
    });

    CHECK(said == "removed");
    CHECK_FALSE(isThere(tmp / "tree"));
}
