#include "Ambrel/Platform/FileSystem.h"

#include "Support/Environment.h"
#include "Support/Expect.h"
#include "Support/Programs.h"

#include <algorithm>
#include <cerrno>
#include <functional>
#include <sys/stat.h>
#include <unistd.h>

using namespace ambrel;
using namespace korvane::test;
using fileSystem::ItemKind;

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

TEST_CASE("appending makes a file that is missing, follows a link and never waits at a pipe") {
    const TempDir tmp;
    const auto file = tmp / "file";
    makeLink(tmp / "link", file);

    fileSystem::appendOrMake(file, "one ");
    fileSystem::appendOrMake(tmp / "link", "two");
    CHECK(readFile(file) == "one two");

    REQUIRE(::mkfifo((tmp / "pipe").c_str(), 0600) == 0);
    CHECK(expectThrow<FileError>([&] { fileSystem::appendOrMake(tmp / "pipe", "x"); }).path ==
          tmp / "pipe");
    CHECK(expectThrow<FileError>([&] { fileSystem::appendOrMake(tmp.path(), "x"); }).action ==
          "append to");
}
