#include "Ambrel/Home/FolderRelation.h"

#include "Manager/Files/NewFolders.h"
#include "Support/Environment.h"
#include "Support/Expect.h"

namespace korvane::test {

using ambrel::folders::areSame;
using ambrel::folders::canonical;
using ambrel::folders::isOrLiesIn;
using ambrel::folders::isOrLiesInByText;

TEST_CASE("a canonical path has no links, dots or missing parts that hide it") {
    const TempDir tmp;
    makeFolder(tmp / "real");
    makeLink(tmp / "link", tmp / "real");
    const auto& base = tmp.path();

    CHECK(canonical(base + "/link") == base + "/real");
    CHECK(canonical(base + "/link/new/x") == base + "/real/new/x");
    CHECK(canonical(base + "/missing/../link") == base + "/real");
    CHECK(canonical(base + "/./real//") == base + "/real");
    CHECK(canonical("/") == "/");
    CHECK(canonical("/missing-at-the-root/..") == "/");
}

TEST_CASE("a folder lies in another one whatever names lead there") {
    const TempDir tmp;
    makeFolder(tmp / "a/b");
    makeLink(tmp / "link", tmp / "a");

    CHECK(isOrLiesIn(tmp / "a", tmp / "a"));
    CHECK(isOrLiesIn(tmp / "a/b", tmp / "link"));
    CHECK(isOrLiesIn(tmp / "link/b/new", tmp / "a"));
    CHECK(isOrLiesIn(tmp / "a/b", "/"));
    CHECK_FALSE(isOrLiesIn(tmp / "a", tmp / "a/b"));
    CHECK_FALSE(isOrLiesIn(tmp / "ab", tmp / "a"));
    CHECK(areSame(tmp / "link/b", tmp / "a/b/"));
    CHECK(areSame(tmp / "new/", tmp / "./new"));
}

TEST_CASE("a folder lies in another one by their text alone") {
    CHECK(isOrLiesInByText("/a", "/a"));
    CHECK(isOrLiesInByText("/a/b", "/a"));
    CHECK(isOrLiesInByText("/a//b/./c/..", "//a/b/"));
    CHECK(isOrLiesInByText("/a", "/missing/../.."));
    CHECK(isOrLiesInByText("/", "/"));
    CHECK_FALSE(isOrLiesInByText("/ab", "/a"));
    CHECK_FALSE(isOrLiesInByText("/a", "/a/b"));
    CHECK_FALSE(isOrLiesInByText("/", "/a"));
    CHECK_FALSE(isOrLiesInByText("/a/../b", "/a"));
}

TEST_CASE("folders that were made for nothing go again, and only those") {
    const TempDir tmp;
    makeFolder(tmp / "old");
    {
        NewFolders made;
        made.make(tmp / "old/a/b");
        made.makePrivate(tmp / "old/home");
        CHECK(modeOf(tmp / "old/home") == 0700);
    }

    CHECK(namesIn(tmp / "old") == Strings{});
}

TEST_CASE("folders that hold something by then, or are to be kept, stay") {
    const TempDir tmp;
    {
        NewFolders made;
        made.make(tmp / "a/b");
        writeFile(tmp / "a/file");
    }
    {
        NewFolders made;
        made.make(tmp / "kept/b");
        made.keep();
    }

    CHECK(namesIn(tmp / "a") == Strings{"file"});
    CHECK(isRealFolder(tmp / "kept/b"));
}

} // namespace korvane::test
