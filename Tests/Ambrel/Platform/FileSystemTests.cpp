#include "Ambrel/Platform/FileSystem.h"

#include "Support/Environment.h"
#include "Support/Expect.h"
#include "Support/Programs.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <fcntl.h>
#include <functional>
#include <sys/xattr.h>
#include <unistd.h>

using namespace ambrel;
using namespace korvane::test;
using fileSystem::ItemKind;

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

void setTimes(const Path& path, long seconds, long nanoseconds) {
    const std::array<timespec, 2> times{{{seconds, nanoseconds}, {seconds, nanoseconds}}};
    REQUIRE(::utimensat(AT_FDCWD, path.c_str(), times.data(), AT_SYMLINK_NOFOLLOW) == 0);
}

/// A tree with one item of every kind, odd modes and old times. Times are set last.
void makeRichTree(const Path& top) {
    writeFile(top + "/plain.txt", "plain");
    writeFile(top + "/locked.txt", "locked");
    writeFile(top + "/sub/deep/file\n\xff.bin", std::string("a\0b", 3));
    writeFile(top + "/sub/empty");
    makeFolder(top + "/hollow");
    makeLink(top + "/dangling", "/nowhere/at all");
    makeLink(top + "/to-folder", "sub");
    REQUIRE(::mkfifo((top + "/pipe").c_str(), 0640) == 0);
    REQUIRE(::setxattr((top + "/plain.txt").c_str(), "user.colour", "red", 3, 0) == 0);
    REQUIRE(::setxattr((top + "/sub").c_str(), "user.kind", "folder", 6, 0) == 0);
    setMode(top + "/plain.txt", 0751);
    setMode(top + "/locked.txt", 0400);
    setMode(top + "/hollow", 02770);
    setMode(top + "/sub/deep", 0555);
    for (const auto* name :
         {"/plain.txt", "/locked.txt", "/sub/deep", "/sub", "/hollow", "/dangling", "/pipe", ""}) {
        setTimes(top + name, 1000000000, 123456789);
    }
}

std::string attribute(const Path& path, const char* name) {
    std::array<char, 64> value{};
    const auto size = ::getxattr(path.c_str(), name, value.data(), value.size());
    return size < 0 ? std::string("none")
                    : std::string(value.data(), static_cast<std::size_t>(size));
}

void checkRichTree(const Path& top) {
    CHECK(readFile(top + "/plain.txt") == "plain");
    CHECK(readFile(top + "/sub/deep/file\n\xff.bin") == std::string("a\0b", 3));
    CHECK(readFile(top + "/sub/empty").empty());
    CHECK(isRealFolder(top + "/hollow"));
    CHECK(linkText(top + "/dangling") == "/nowhere/at all");
    CHECK(linkText(top + "/to-folder") == "sub");
    CHECK(S_ISFIFO(statusOf(top + "/pipe").st_mode));
    CHECK(attribute(top + "/plain.txt", "user.colour") == "red");
    CHECK(attribute(top + "/sub", "user.kind") == "folder");
    CHECK(modeOf(top + "/plain.txt") == 0751);
    CHECK(modeOf(top + "/locked.txt") == 0400);
    CHECK(modeOf(top + "/hollow") == 02770);
    CHECK(modeOf(top + "/sub/deep") == 0555);
    CHECK(modeOf(top + "/pipe") == 0640);
    for (const auto* name :
         {"/plain.txt", "/locked.txt", "/sub/deep", "/sub", "/hollow", "/dangling", "/pipe", ""}) {
        CAPTURE(name);
        CHECK(statusOf(top + name).st_mtim.tv_sec == 1000000000);
        CHECK(statusOf(top + name).st_mtim.tv_nsec == 123456789);
    }
}

} // namespace

TEST_CASE("questions about a path with a NUL byte in it are answered with no") {
    const TempDir tmp;
    writeFile(tmp / "a");
    const auto path = (tmp / "a") + std::string("\0b", 2);

    CHECK_FALSE(fileSystem::exists(path));
    CHECK_FALSE(fileSystem::kindOf(path).has_value());
    CHECK_FALSE(fileSystem::isFolder(path));
    CHECK_FALSE(fileSystem::isExecutableFile(path));
    CHECK_FALSE(fileSystem::isSameItem(path, path));
}

TEST_CASE("operations on a path with a NUL byte in it are refused and touch nothing") {
    const TempDir tmp;
    writeFile(tmp / "a", "kept");
    const auto path = (tmp / "a") + std::string("\0b", 2);
    const auto before = snapshot(tmp.path());
    const std::vector<std::function<void()>> operations{
        [&] { (void)fileSystem::list(path); },
        [&] { (void)fileSystem::read(path); },
        [&] { fileSystem::write(path, "x"); },
        [&] { fileSystem::copyFile(path, tmp / "c"); },
        [&] { fileSystem::copyFile(tmp / "a", path); },
        [&] { fileSystem::setPermissions(path, 0600); },
        [&] { fileSystem::createFolders(path); },
        [&] { fileSystem::createFolder(path, 0700); },
        [&] { fileSystem::createSymbolicLink("x", path); },
        [&] { fileSystem::removeItem(path); },
        [&] { fileSystem::removeTree(path); },
        [&] { fileSystem::move(path, tmp / "c"); },
        [&] { fileSystem::move(tmp / "a", path); },
        [&] { fileSystem::exchange(path, tmp / "a"); },
    };
    for (std::size_t index = 0; index < operations.size(); ++index) {
        CAPTURE(index);
        CHECK(isOneLine(expectThrow<FileError>(operations[index]).description()));
    }
    CHECK(snapshot(tmp.path()) == before);
}

TEST_CASE("a dangling link is nothing, but its kind is told") {
    const TempDir tmp;
    makeLink(tmp / "dangling", tmp / "nowhere");
    makeLink(tmp / "link", tmp / "folder");
    makeFolder(tmp / "folder");
    writeFile(tmp / "file");

    CHECK_FALSE(fileSystem::exists(tmp / "dangling"));
    CHECK(fileSystem::kindOf(tmp / "dangling") == ItemKind::symbolicLink);
    CHECK(fileSystem::exists(tmp / "link"));
    CHECK(fileSystem::isFolder(tmp / "link"));
    CHECK(fileSystem::kindOf(tmp / "link") == ItemKind::symbolicLink);
    CHECK(fileSystem::kindOf(tmp / "folder") == ItemKind::folder);
    CHECK(fileSystem::kindOf(tmp / "file") == ItemKind::file);
    CHECK(fileSystem::kindOf("/dev/null") == ItemKind::other);
    CHECK_FALSE(fileSystem::kindOf(tmp / "nowhere").has_value());
    CHECK_FALSE(fileSystem::exists(""));
}

TEST_CASE("an executable file is a regular file that this user may execute") {
    const TempDir tmp;
    writeScript(tmp / "program", "true");
    writeFile(tmp / "plain");
    makeFolder(tmp / "folder");
    makeLink(tmp / "link", tmp / "program");

    CHECK(fileSystem::isExecutableFile(tmp / "program"));
    CHECK(fileSystem::isExecutableFile(tmp / "link"));
    CHECK_FALSE(fileSystem::isExecutableFile(tmp / "plain"));
    CHECK_FALSE(fileSystem::isExecutableFile(tmp / "folder"));
    CHECK_FALSE(fileSystem::isExecutableFile(tmp / "missing"));
}

TEST_CASE("the same item is recognised through links and not by its text") {
    const TempDir tmp;
    writeFile(tmp / "folder/file", "x");
    writeFile(tmp / "copy", "x");
    makeLink(tmp / "link", "folder");

    CHECK(fileSystem::isSameItem(tmp / "folder/file", tmp / "link/../folder/./file"));
    CHECK(fileSystem::isSameItem(tmp / "folder", tmp / "link"));
    CHECK_FALSE(fileSystem::isSameItem(tmp / "folder/file", tmp / "copy"));
    CHECK_FALSE(fileSystem::isSameItem(tmp / "missing", tmp / "missing"));
}

TEST_CASE("a relative path is made absolute against the working directory, dots kept") {
    const TempDir tmp;
    const WorkingDirectory inside(tmp.path());

    CHECK(fileSystem::currentDirectory() == tmp.path());
    CHECK(fileSystem::absolute("x") == tmp / "x");
    CHECK(fileSystem::absolute("../x/.") == tmp / "../x/.");
    CHECK(fileSystem::absolute("/x/../y") == "/x/../y");
}

TEST_CASE("a resolved path has no links in it and a missing part makes it absent") {
    const TempDir tmp;
    makeFolder(tmp / "folder");
    makeLink(tmp / "link", "folder");

    CHECK(fileSystem::resolved(tmp / "link/.") == tmp / "folder");
    CHECK_FALSE(fileSystem::resolved(tmp / "link/missing").has_value());
}

TEST_CASE("a listing holds hidden names and names that are no UTF-8, but not the dots") {
    const TempDir tmp;
    for (const auto* name : {".hidden", "\xff\n", "plain"}) writeFile(tmp / "f/" + name);

    auto names = fileSystem::list(tmp / "f");

    std::sort(names.begin(), names.end());
    CHECK(names == Strings{".hidden", "plain", "\xff\n"});
    CHECK(expectThrow<FileError>([&] { (void)fileSystem::list(tmp / "missing"); }).code == ENOENT);
    CHECK(expectThrow<FileError>([&] { (void)fileSystem::list(tmp / "f/plain"); }).code == ENOTDIR);
}

TEST_CASE("reading gives all bytes and refuses a folder, with the path in the error") {
    const TempDir tmp;
    const std::string bytes = std::string("a\0\xff\r\n", 5) + std::string(300000, 'z');
    writeFile(tmp / "file", bytes);

    CHECK(fileSystem::read(tmp / "file") == bytes);
    CHECK(fileSystem::read("/proc/self/stat").size() > 10); // its size is told as 0
    CHECK(expectThrow<FileError>([&] { (void)fileSystem::read(tmp.path()); }).code == EISDIR);
    const auto error = expectThrow<FileError>([&] { (void)fileSystem::read(tmp / "missing"); });
    CHECK(error.path == tmp / "missing");
    CHECK(error.description() ==
          "Cannot read " + (tmp / "missing") + ": No such file or directory");
}

TEST_CASE("an error's description stays one line for a hostile path") {
    const TempDir tmp;
    const auto error =
        expectThrow<FileError>([&] { (void)fileSystem::read(tmp / "a\nb\x1b[2J\xff"); });

    CHECK(isOneLine(error.description()));
    CHECK(error.path == tmp / "a\nb\x1b[2J\xff");
}

TEST_CASE("writing goes over the file in place and cuts off what was longer") {
    const TempDir tmp;
    writeFile(tmp / "file", "a long text");
    setMode(tmp / "file", 0640);
    const auto before = statusOf(tmp / "file");

    fileSystem::write(tmp / "file", "short");

    CHECK(readFile(tmp / "file") == "short");
    CHECK(statusOf(tmp / "file").st_ino == before.st_ino);
    CHECK(modeOf(tmp / "file") == 0640);
    fileSystem::write(tmp / "new", std::string("\0x", 2));
    CHECK(readFile(tmp / "new") == std::string("\0x", 2));
    expectThrow<FileError>([&] { fileSystem::write(tmp / "missing/new", "x"); });
    CHECK(namesIn(tmp.path()) == Strings{"file", "new"});
}

TEST_CASE("replacing a file leaves what a link leads to alone and gives the mode asked for") {
    const TempDir tmp;
    makeLink(tmp / "link", writeFile(tmp / "target", "old"));
    const auto mask = ::umask(077);
    fileSystem::replace(tmp / "link", "new", 0755);
    fileSystem::replace(tmp / "fresh", "text");
    ::umask(mask);

    CHECK(fileSystem::kindOf(tmp / "link") == ItemKind::file);
    CHECK(readFile(tmp / "link") == "new");
    CHECK(modeOf(tmp / "link") == 0755);
    CHECK(readFile(tmp / "target") == "old");
    CHECK(readFile(tmp / "fresh") == "text");
    CHECK(modeOf(tmp / "fresh") == 0600);
    CHECK(namesIn(tmp.path()) == Strings{"fresh", "link", "target"});
}

TEST_CASE("what cannot be replaced stays, is named in the error and has nothing beside it") {
    const TempDir tmp;
    makeFolder(tmp / "folder");

    const auto error =
        expectThrow<FileError>([&] { fileSystem::replace(tmp / "folder", "text", 0600); });

    CHECK(error.path == tmp / "folder");
    CHECK(fileSystem::isFolder(tmp / "folder"));
    CHECK(namesIn(tmp.path()) == Strings{"folder"});
}

TEST_CASE("copying a file follows a link, never replaces and leaves nothing after a failure") {
    const TempDir tmp;
    const std::string bytes(200000, 'b');
    writeFile(tmp / "file", bytes);
    makeLink(tmp / "link", "file");
    writeFile(tmp / "taken", "taken");
    makeLink(tmp / "dangling", tmp / "victim");

    fileSystem::copyFile(tmp / "link", tmp / "copy");

    CHECK(readFile(tmp / "copy") == bytes);
    CHECK_FALSE(isLink(tmp / "copy"));
    CHECK(expectThrow<FileError>([&] { fileSystem::copyFile(tmp / "file", tmp / "taken"); }).code ==
          EEXIST);
    CHECK(readFile(tmp / "taken") == "taken");
    CHECK(expectThrow<FileError>([&] {
              fileSystem::copyFile(tmp / "file", tmp / "dangling");
          }).code == EEXIST);
    CHECK_FALSE(isThere(tmp / "victim"));
    expectThrow<FileError>([&] { fileSystem::copyFile(tmp.path(), tmp / "of-folder"); });
    expectThrow<FileError>([&] { fileSystem::copyFile(tmp / "missing", tmp / "of-missing"); });
    CHECK_FALSE(isThere(tmp / "of-folder"));
    CHECK_FALSE(isThere(tmp / "of-missing"));
}

TEST_CASE("folders are made with those above them and an existing one is no error") {
    const TempDir tmp;
    makeFolder(tmp / "real");
    makeLink(tmp / "link", "real");
    writeFile(tmp / "file");

    fileSystem::createFolders(tmp / "a/b/c/");
    fileSystem::createFolders(tmp / "a/b/c");
    fileSystem::createFolders(tmp / "link");
    fileSystem::createFolders(tmp / "link/inside");
    fileSystem::createFolders("/");

    CHECK(isRealFolder(tmp / "a/b/c"));
    CHECK(isRealFolder(tmp / "real/inside"));
    expectThrow<FileError>([&] { fileSystem::createFolders(tmp / "file"); });
    expectThrow<FileError>([&] { fileSystem::createFolders(tmp / "file/below"); });
    expectThrow<FileError>([&] { fileSystem::createFolders(""); });
    CHECK(readFile(tmp / "file").empty());
}

TEST_CASE("one new folder gets its mode whatever the mask and replaces nothing") {
    const TempDir tmp;
    const auto mask = ::umask(077);
    fileSystem::createFolder(tmp / "open", 0755);
    ::umask(0);
    fileSystem::createFolder(tmp / "private", 0700);
    ::umask(mask);

    CHECK(modeOf(tmp / "open") == 0755);
    CHECK(modeOf(tmp / "private") == 0700);
    CHECK(expectThrow<FileError>([&] { fileSystem::createFolder(tmp / "open", 0700); }).code ==
          EEXIST);
    CHECK(modeOf(tmp / "open") == 0755);
}

TEST_CASE("a symbolic link holds its target as text and replaces nothing") {
    const TempDir tmp;
    fileSystem::createSymbolicLink("../any text", tmp / "link");

    CHECK(linkText(tmp / "link") == "../any text");
    CHECK(expectThrow<FileError>([&] { fileSystem::createSymbolicLink("x", tmp / "link"); }).code ==
          EEXIST);
    CHECK(linkText(tmp / "link") == "../any text");
}

TEST_CASE("permissions are those of the item that a link leads to") {
    const TempDir tmp;
    writeFile(tmp / "file");
    makeLink(tmp / "link", "file");

    fileSystem::setPermissions(tmp / "link", 0604);

    CHECK(modeOf(tmp / "file") == 0604);
}

TEST_CASE("removing one item takes an empty folder, a file or a link, and nothing with entries") {
    const TempDir tmp;
    makeFolder(tmp / "empty");
    writeFile(tmp / "full/file", "kept");
    makeLink(tmp / "link", "full");
    writeFile(tmp / "file");

    fileSystem::removeItem(tmp / "empty");
    fileSystem::removeItem(tmp / "link");
    fileSystem::removeItem(tmp / "file");
    const auto error = expectThrow<FileError>([&] { fileSystem::removeItem(tmp / "full"); });

    CHECK(error.path == tmp / "full");
    CHECK(namesIn(tmp.path()) == Strings{"full"});
    CHECK(readFile(tmp / "full/file") == "kept");
    CHECK(expectThrow<FileError>([&] { fileSystem::removeItem(tmp / "missing"); }).code == ENOENT);
}

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

TEST_CASE("what holds no end is not read to its end") {
    const auto error = expectThrow<FileError>([] { fileSystem::read("/dev/zero"); });
    CHECK(error.code == EFBIG);
    CHECK(error.path == "/dev/zero");
}

TEST_CASE("a relative path in a working directory that is gone lies nowhere") {
    const TempDir tmp;
    makeFolder(tmp / "gone");
    const WorkingDirectory inside(tmp / "gone");
    REQUIRE(::rmdir((tmp / "gone").c_str()) == 0);

    expectThrow<FileError>([] { fileSystem::absolute("bin/true"); });

    CHECK(fileSystem::absolute("/bin/true") == "/bin/true");
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

TEST_CASE("two items are exchanged in one step and both must exist") {
    const TempDir tmp;
    writeFile(tmp / "left/file", "left");
    writeFile(tmp / "right", "right");

    fileSystem::exchange(tmp / "left", tmp / "right");

    CHECK(readFile(tmp / "left") == "right");
    CHECK(readFile(tmp / "right/file") == "left");
    expectThrow<FileError>([&] { fileSystem::exchange(tmp / "left", tmp / "missing"); });
    CHECK(readFile(tmp / "left") == "right");
}

TEST_CASE("the reason of an error does not depend on the user's language") {
    const ScopedVariable language("LC_ALL", "de_DE.UTF-8");
    CHECK(errorReason(ENOENT) == "No such file or directory");
    CHECK(errorReason(EACCES) == "Permission denied");
    CHECK_FALSE(errorReason(123456).empty());
}
