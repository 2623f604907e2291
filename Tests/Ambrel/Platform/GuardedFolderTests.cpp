#include "Ambrel/Platform/GuardedFolder.h"

#include "Support/Environment.h"
#include "Support/Expect.h"
#include "Support/Programs.h"

#include <algorithm>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace ambrel;
using namespace korvane::test;
using fileSystem::ItemKind;

namespace {

/// Sets the mask for new files until the end of the scope.
class Mask {
public:
    explicit Mask(mode_t mask) : before_(::umask(mask)) {}
    Mask(const Mask&) = delete;
    Mask& operator=(const Mask&) = delete;
    ~Mask() { ::umask(before_); }

private:
    mode_t before_;
};

const std::string cutName("a\0b", 3);

} // namespace

TEST_CASE("missing folders get exactly the mode whatever the mask and existing ones keep theirs") {
    const TempDir tmp;
    makeFolder(tmp / "old");
    setMode(tmp / "old", 0751);
    for (const mode_t mask : {0000U, 0022U, 0077U, 0277U}) {
        const Mask scope(mask);
        const auto name = "made-" + std::to_string(mask);
        GuardedFolder::open(tmp.path()).folder("old/" + name + "/deep", 0755);
        CHECK(modeOf(tmp / "old") == 0751);
        CHECK(modeOf(tmp / ("old/" + name)) == 0755);
        CHECK(modeOf(tmp / ("old/" + name + "/deep")) == 0755);
    }
}

TEST_CASE("a link on the way below the root is not passed and nothing is made behind it") {
    const TempDir tmp;
    makeFolder(tmp / "victim/sub");
    makeFolder(tmp / "root/a");
    makeLink(tmp / "root/link", tmp / "victim");
    makeLink(tmp / "root/a/link", "../../victim");
    makeLink(tmp / "root/dangling", "nowhere");
    const auto before = snapshot(tmp.path());
    const auto root = GuardedFolder::open(tmp / "root");

    for (const auto* way : {"link", "link/sub", "link/new", "a/link", "a/link/new", "dangling"}) {
        CAPTURE(std::string(way));
        expectThrow<FileError>([&] { root.folder(way, 0700); });
        CHECK_FALSE(root.findFolder(way).has_value());
    }
    CHECK(snapshot(tmp.path()) == before);
}

TEST_CASE("a file or a pipe on the way is an error and stays as it is") {
    const TempDir tmp;
    writeFile(tmp / "file", "kept");
    REQUIRE(::mkfifo((tmp / "pipe").c_str(), 0600) == 0);
    const auto before = snapshot(tmp.path());
    const auto root = GuardedFolder::open(tmp.path());

    for (const auto* way : {"file", "file/new", "pipe", "pipe/new"}) {
        CAPTURE(std::string(way));
        expectThrow<FileError>([&] { root.folder(way, 0700); });
        CHECK_FALSE(root.findFolder(way).has_value());
    }
    CHECK(snapshot(tmp.path()) == before);
}

TEST_CASE("ways out of the folder and names that are none are refused") {
    const TempDir tmp;
    makeFolder(tmp / "root/a");
    const auto before = snapshot(tmp.path());
    const auto root = GuardedFolder::open(tmp / "root");

    for (const std::string& way :
         {std::string(".."), std::string("a/.."), std::string("../x"), std::string("/tmp"),
          std::string("a//b"), std::string("."), cutName}) {
        CAPTURE(way);
        expectThrow<FileError>([&] { root.folder(way, 0700); });
        CHECK_FALSE(root.findFolder(way).has_value());
    }
    for (const std::string& name :
         {std::string(), std::string("."), std::string(".."), std::string("a/b"), cutName}) {
        CAPTURE(name);
        CHECK_FALSE(root.kindOf(name).has_value());
        CHECK_FALSE(root.isEmptyFolder(name));
        expectThrow<FileError>([&] { root.removeEmptyFolder(name); });
        expectThrow<FileError>([&] { root.createSymbolicLink("/x", name); });
        expectThrow<FileError>([&] { root.putFile(name, "x", 0600); });
    }
    expectThrow<FileError>([&] { root.createSymbolicLink(cutName, "link"); });
    CHECK(snapshot(tmp.path()) == before);
}

TEST_CASE("the root may be reached through links and must be a folder") {
    const TempDir tmp;
    makeFolder(tmp / "real/root");
    makeLink(tmp / "alias", tmp / "real");
    makeLink(tmp / "root", tmp / "real/root");
    writeFile(tmp / "file");

    GuardedFolder::open(tmp / "alias/root").folder("one", 0700);
    GuardedFolder::open(tmp / "root").folder("two", 0700);

    CHECK(namesIn(tmp / "real/root") == Strings{"one", "two"});
    expectThrow<FileError>([&] { GuardedFolder::open(tmp / "file"); });
    expectThrow<FileError>([&] { GuardedFolder::open(tmp / "missing"); });
}

TEST_CASE("an open folder stays the same one when its name is exchanged for a link") {
    const TempDir tmp;
    makeFolder(tmp / "victim");
    const auto folder = GuardedFolder::open(tmp.path()).folder("a/b", 0700);
    REQUIRE(::rename((tmp / "a").c_str(), (tmp / "moved").c_str()) == 0);
    makeLink(tmp / "a", tmp / "victim");

    folder.folder("below", 0700);
    folder.createSymbolicLink("/target", "link");
    CHECK(folder.putFile("file", "x", 0600));

    CHECK(namesIn(tmp / "victim").empty());
    CHECK(namesIn(tmp / "moved/b") == Strings{"below", "file", "link"});
}

TEST_CASE("the kinds of entries are told without following links") {
    const TempDir tmp;
    makeFolder(tmp / "empty");
    writeFile(tmp / "full/.hidden");
    writeFile(tmp / "file");
    makeLink(tmp / "link", "empty");
    REQUIRE(::mkfifo((tmp / "pipe").c_str(), 0600) == 0);
    const auto root = GuardedFolder::open(tmp.path());

    CHECK(root.kindOf("empty") == ItemKind::folder);
    CHECK(root.kindOf("file") == ItemKind::file);
    CHECK(root.kindOf("link") == ItemKind::symbolicLink);
    CHECK(root.kindOf("pipe") == ItemKind::other);
    CHECK_FALSE(root.kindOf("missing").has_value());
    CHECK(root.isEmptyFolder("empty"));
    for (const auto* name : {"full", "file", "link", "pipe", "missing"}) {
        CHECK_FALSE(root.isEmptyFolder(name));
    }
}

TEST_CASE("a folder that cannot be listed does not count as empty") {
    const TempDir tmp;
    makeFolder(tmp / "locked");
    giveToOrdinaryUser(tmp.path());
    setMode(tmp / "locked", 0000);

    const auto said = asOrdinaryUser([&] {
        const bool isEmpty = GuardedFolder::open(tmp.path()).isEmptyFolder("locked");
        return std::string(isEmpty ? "empty" : "not certain");
    });

    setMode(tmp / "locked", 0700);
    CHECK(said == "not certain");
}

TEST_CASE("only an empty folder is removed") {
    const TempDir tmp;
    makeFolder(tmp / "empty");
    writeFile(tmp / "full/file");
    writeFile(tmp / "file");
    makeLink(tmp / "link", "empty");
    const auto root = GuardedFolder::open(tmp.path());

    for (const auto* name : {"full", "file", "link", "missing"}) {
        expectThrow<FileError>([&] { root.removeEmptyFolder(name); });
    }
    root.removeEmptyFolder("empty");

    CHECK(namesIn(tmp.path()) == Strings{"file", "full", "link"});
}

TEST_CASE("a link holds its target as given and replaces nothing") {
    const TempDir tmp;
    writeFile(tmp / "file", "kept");
    makeLink(tmp / "dangling", "nowhere");
    const auto root = GuardedFolder::open(tmp.path());

    root.createSymbolicLink("/some/where/", "link");
    for (const auto* name : {"link", "file", "dangling"}) {
        expectThrow<FileError>([&] { root.createSymbolicLink("/other", name); });
    }

    CHECK(linkText(tmp / "link") == "/some/where/");
    CHECK(linkText(tmp / "dangling") == "nowhere");
    CHECK(readFile(tmp / "file") == "kept");
}

TEST_CASE("a file is put in place with exactly its mode and no other file remains") {
    const TempDir tmp;
    const Mask mask(0077);
    const std::string bytes(300000, 'x');

    CHECK(GuardedFolder::open(tmp.path()).putFile("file", bytes, 0644));

    CHECK(readFile(tmp / "file") == bytes);
    CHECK(modeOf(tmp / "file") == 0644);
    CHECK(namesIn(tmp.path()) == Strings{"file"});
}

TEST_CASE("a file is not put where anything is already") {
    const TempDir tmp;
    writeFile(tmp / "file", "kept");
    makeFolder(tmp / "folder");
    makeLink(tmp / "link", "file");
    makeLink(tmp / "dangling", "nowhere");
    const auto before = snapshot(tmp.path());
    const auto root = GuardedFolder::open(tmp.path());

    for (const auto* name : {"file", "folder", "link", "dangling"}) {
        CHECK_FALSE(root.putFile(name, "other", 0600));
    }

    CHECK(snapshot(tmp.path()) == before);
}

TEST_CASE("of several who put the same file one wins and nobody sees a part of it") {
    const TempDir tmp;
    const auto root = GuardedFolder::open(tmp.path());
    std::vector<std::string> texts;
    for (char letter = 'a'; letter < 'e'; ++letter) texts.emplace_back(200000, letter);
    std::vector<pid_t> children;
    for (const auto& text : texts) {
        const auto pid = ::fork();
        if (pid == 0) ::_exit(root.putFile("file", text, 0600) ? 1 : 0);
        children.push_back(pid);
    }
    int winners = 0;
    for (const auto pid : children) {
        int status = -1;
        REQUIRE(::waitpid(pid, &status, 0) == pid);
        REQUIRE(WIFEXITED(status));
        winners += WEXITSTATUS(status);
    }

    CHECK(winners == 1);
    CHECK(namesIn(tmp.path()) == Strings{"file"});
    CHECK(std::count(texts.begin(), texts.end(), readFile(tmp / "file")) == 1);
}

TEST_CASE("a file that cannot be put is an error and leaves nothing") {
    const TempDir tmp;
    makeFolder(tmp / "locked");
    giveToOrdinaryUser(tmp.path());
    setMode(tmp / "locked", 0555);

    const auto said = asOrdinaryUser([&] {
        GuardedFolder::open(tmp / "locked").putFile("file", "x", 0600);
        return std::string("put");
    });

    CHECK(beginsWith(said, "threw: Cannot write " + (tmp / "locked/file")));
    CHECK(namesIn(tmp / "locked").empty());
}
