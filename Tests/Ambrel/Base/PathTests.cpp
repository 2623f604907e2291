#include "Ambrel/Base/Path.h"

#include "Support/Expect.h"

#include <string>
#include <vector>

using namespace ambrel;

TEST_CASE("joining puts one slash between and a right side never replaces the left") {
    struct Row {
        std::string left, right, joined;
    };
    const std::vector<Row> table{
        {"/out", "x.app", "/out/x.app"},
        {"/out/", "x.app", "/out/x.app"},
        {"/out", "/etc/x.app", "/out/etc/x.app"},
        {"/out/", "/etc/x.app", "/out/etc/x.app"},
        {"/out", "../x", "/out/../x"},
        {"/", "x", "/x"},
        {"", "x", "x"},
        {"a", "", "a"},
        {"a/", "", "a/"},
        {"", "", ""},
        {"\xff", "\n", "\xff/\n"},
    };
    for (const auto& row : table) {
        CAPTURE(row.left);
        CAPTURE(row.right);
        CHECK(paths::join(row.left, row.right) == row.joined);
    }
}

TEST_CASE("joining many slashes still leaves exactly one") {
    CHECK(paths::join("/out//", "x") == "/out/x");
    CHECK(paths::join("/out", "//x") == "/out/x");
    CHECK(paths::join("/out//", "//x") == "/out/x");
}

TEST_CASE("trailing slashes are dropped, but the root stays") {
    CHECK(paths::withoutTrailingSlashes("/a/b///") == "/a/b");
    CHECK(paths::withoutTrailingSlashes("/a") == "/a");
    CHECK(paths::withoutTrailingSlashes("/") == "/");
    CHECK(paths::withoutTrailingSlashes("///") == "/");
    CHECK(paths::withoutTrailingSlashes("") == "");
}

TEST_CASE("a trailing slash does not count in last component, folder, extension and stem") {
    struct Row {
        std::string path, last, folder, extension, stem;
    };
    const std::vector<Row> table{
        {"/a/b/c.app", "c.app", "/a/b", "app", "c"},
        {"/a/b/c.app/", "c.app", "/a/b", "app", "c"},
        {"/a/b/c.app///", "c.app", "/a/b", "app", "c"},
        {"/a/Foo.bar.app", "Foo.bar.app", "/a", "app", "Foo.bar"},
        {"/a/Foo.APP/", "Foo.APP", "/a", "APP", "Foo"},
        {"/a", "a", "/", "", "a"},
        {"/a/", "a", "/", "", "a"},
        {"a", "a", "", "", "a"},
        {"/a.b/c", "c", "/a.b", "", "c"},
        {"/a/.profile", ".profile", "/a", "", ".profile"},
        {"/a/.app", ".app", "/a", "", ".app"},
        {"/a/.Hidden.app", ".Hidden.app", "/a", "app", ".Hidden"},
        {"/a/archive.tar.gz", "archive.tar.gz", "/a", "gz", "archive.tar"},
    };
    for (const auto& row : table) {
        CAPTURE(row.path);
        CHECK(paths::lastComponent(row.path) == row.last);
        CHECK(paths::deletingLastComponent(row.path) == row.folder);
        CHECK(paths::extension(row.path) == row.extension);
        CHECK(paths::stem(row.path) == row.stem);
    }
}

TEST_CASE("the root and the empty path have their own last component") {
    CHECK(paths::lastComponent("/") == "/");
    CHECK(paths::lastComponent("///") == "/");
    CHECK(paths::lastComponent("") == "");
    CHECK(paths::deletingLastComponent("") == "");
    CHECK(paths::extension("") == "");
    CHECK(paths::stem("") == "");
}
