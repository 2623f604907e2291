#include "Ambrel/Platform/FileSystem.h"

#include "Support/Environment.h"
#include "Support/Expect.h"
#include "Support/Programs.h"
#include "Support/RichTree.h"

#include <fcntl.h>

using namespace ambrel;
using namespace korvane::test;

TEST_CASE("a move never replaces what stands at the destination, not even a dangling link") {
    const TempDir here;
    const TempDir there = TempDir::onAnotherFileSystemThan(here);
    for (const TempDir* destination : {&here, &there}) {
        const TempDir& tmp = *destination;
        CAPTURE(tmp.path());
        writeFile(here / "source", "source");
        writeFile(tmp / "file", "taken");
        makeFolder(tmp / "folder");
        makeLink(tmp / "dangling", tmp / "victim");
        for (const auto* name : {"file", "folder", "dangling"}) {
            CAPTURE(name);
            expectThrow<FileError>([&] { fileSystem::move(here / "source", tmp / name); });
            CHECK(readFile(here / "source") == "source");
        }
        CHECK(readFile(tmp / "file") == "taken");
        CHECK(isRealFolder(tmp / "folder"));
        CHECK(linkText(tmp / "dangling") == tmp / "victim");
        CHECK_FALSE(isThere(tmp / "victim"));
    }
    CHECK(namesIn(there.path()) == Strings{"dangling", "file", "folder"});
}

TEST_CASE("a move on one file system keeps the item itself") {
    const TempDir tmp;
    makeRichTree(tmp / "tree");
    const auto inode = statusOf(tmp / "tree").st_ino;

    fileSystem::move(tmp / "tree", tmp / "moved");

    CHECK(statusOf(tmp / "moved").st_ino == inode);
    CHECK_FALSE(isThere(tmp / "tree"));
    checkRichTree(tmp / "moved");
}

TEST_CASE("a move across file systems keeps modes, times, attributes and links") {
    const TempDir here;
    const TempDir there = TempDir::onAnotherFileSystemThan(here);
    makeRichTree(here / "tree");

    fileSystem::move(here / "tree", there / "moved");

    CHECK(namesIn(here.path()).empty());
    CHECK(namesIn(there.path()) == Strings{"moved"});
    checkRichTree(there / "moved");
    fileSystem::move(there / "moved", here / "back");
    checkRichTree(here / "back");
    CHECK(namesIn(there.path()).empty());
}

TEST_CASE("an owner's write-protected folders are moved and stay write-protected") {
    const TempDir here;
    const TempDir elsewhere = TempDir::onAnotherFileSystemThan(here);
    makeFolder(here / "folder");
    for (const auto& destination : {here / "folder/moved", elsewhere / "moved"}) {
        CAPTURE(destination);
        makeRichTree(here / "tree");
        setMode(here / "tree/sub", 0500);
        setMode(here / "tree", 0555);
        giveToOrdinaryUser(here.path());
        giveToOrdinaryUser(elsewhere.path());
        setMode(here / "tree/hollow", 02770); // which the new owner has cleared

        const auto said = asOrdinaryUser([&]() -> std::string {
            fileSystem::move(here / "tree", destination);
            return "moved";
        });

        CHECK(said == "moved");
        CHECK(namesIn(here.path()) == Strings{"folder"});
        CHECK(modeOf(destination) == 0555);
        CHECK(modeOf(destination + "/sub") == 0500);
        checkRichTree(destination);
    }
}

TEST_CASE("a write-protected folder that cannot be moved stays where and as it is") {
    const TempDir here;
    const TempDir elsewhere = TempDir::onAnotherFileSystemThan(here);
    writeFile(here / "locked/tree/sub/file", "kept");
    writeFile(here / "taken/file", "taken");
    writeFile(here / "tree/sub/file", "kept");
    giveToOrdinaryUser(here.path());
    giveToOrdinaryUser(elsewhere.path());
    for (const auto* folder : {"locked/tree/sub", "locked/tree", "locked", "tree/sub", "tree"}) {
        setMode(here / folder, 0555);
    }

    const auto moveOf = [](const Path& from, const Path& to) {
        return asOrdinaryUser([&]() -> std::string {
            fileSystem::move(from, to);
            return "moved";
        });
    };
    const auto before = snapshot(here.path());
    CHECK(beginsWith(moveOf(here / "tree", here / "taken/file"), "threw: Cannot move"));
    CHECK(beginsWith(moveOf(here / "locked/tree", here / "taken/x"), "threw: Cannot move"));
    CHECK(beginsWith(moveOf(here / "tree", here / "locked/x"), "threw: Cannot move"));

    CHECK(snapshot(here.path()) == before);
}

TEST_CASE("a move across file systems carries a single file, a link and a large file") {
    const TempDir here;
    const TempDir there = TempDir::onAnotherFileSystemThan(here);
    writeFile(here / "large", std::string(5000000, 'l') + "end");
    makeLink(here / "link", "large");

    fileSystem::move(here / "large", there / "large");
    fileSystem::move(here / "link", there / "link");

    CHECK(readFile(there / "large") == std::string(5000000, 'l') + "end");
    CHECK(linkText(there / "link") == "large");
    CHECK(namesIn(here.path()).empty());
    CHECK(namesIn(there.path()) == Strings{"large", "link"});
}

TEST_CASE(
    "a move across file systems that cannot read everything leaves the source and no remains") {
    const TempDir here;
    const TempDir there = TempDir::onAnotherFileSystemThan(here);
    writeFile(here / "tree/a", "a");
    writeFile(here / "tree/secret", "s");
    writeFile(here / "tree/z/b", "b");
    giveToOrdinaryUser(here.path());
    giveToOrdinaryUser(there.path());
    setMode(here / "tree/secret", 0000);

    const auto said = asOrdinaryUser([&]() -> std::string {
        fileSystem::move(here / "tree", there / "tree");
        return "moved";
    });

    CHECK(beginsWith(said, "threw: Cannot "));
    CHECK(namesIn(there.path()).empty());
    setMode(here / "tree/secret", 0600);
    CHECK(contentsBelow({here.path()}).size() == 3);
    CHECK(namesIn(here / "tree") == Strings{"a", "secret", "z"});
}

TEST_CASE("a folder cannot be moved into itself and stays whole") {
    const TempDir tmp;
    writeFile(tmp / "tree/file", "kept");

    expectThrow<FileError>([&] { fileSystem::move(tmp / "tree", tmp / "tree/inside"); });
    expectThrow<FileError>([&] { fileSystem::move(tmp / "missing", tmp / "x"); });

    CHECK(namesIn(tmp / "tree") == Strings{"file"});
}
