#include "Ambrel/Home/FolderRelation.h"

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

} // namespace korvane::test
