#include "Ambrel/Platform/FileSystem.h"
#include "Manager/Base/Refusal.h"
#include "Manager/Rules/UserText.h"
#include "Support/Environment.h"
#include "Support/Expect.h"

using korvane::checkedName;
using korvane::Refusal;
using korvane::test::expectThrow;

namespace korvane::test {

TEST_CASE("an ordinary name is kept and only trimmed") {
    struct Row {
        std::string typed;
        std::string name;
    };
    const Row rows[] = {
        {"Mail", "Mail"},
        {"  Mail\n", "Mail"},
        {"a:b", "a:b"},
        {"-x", "-x"},
        {"100 %", "100 %"},
        {"it's \"quoted\" $(x) `y`", "it's \"quoted\" $(x) `y`"},
        {"Ça va 😀", "Ça va 😀"},
        {"עברית", "עברית"},
        {std::string(251, 'a'), std::string(251, 'a')},
    };
    for (const auto& row : rows) {
        CAPTURE(row.typed);
        CHECK(checkedName(row.typed) == row.name);
    }
}

TEST_CASE("a name that cannot be a bundle's is refused with the reason") {
    struct Row {
        std::string typed;
        std::string reason;
    };
    const Row rows[] = {
        {"/", "separates folders"},
        {"a/b", "separates folders"},
        {"../../etc/x", "separates folders"},
        {".", "stands for a folder"},
        {"..", "stands for a folder"},
        {" .. ", "stands for a folder"},
        {".hidden", "begins with a dot"},
        {"a\nb", "control character"},
        {"a\tb", "control character"},
        {"\x7f", "control character"},
        {"a\xc2\x85z", "control character"},
        {"a\x1b[31m", "control character"},
        {"", "empty"},
        {" \n\t", "empty"},
        {"\xff", "not UTF-8"},
        {"a\xed\xa0\x80", "not UTF-8"},
        {std::string(252, 'a'), "too long"},
        {std::string(63, 'x') + std::string(3000, 'y'), "too long"},
    };
    for (const auto& row : rows) {
        CAPTURE(row.typed);
        const auto error = expectThrow<Refusal>([&] { checkedName(row.typed); });
        CHECK(contains(error.what(), row.reason));
        CHECK(isOneLine(error.what()));
    }
}

TEST_CASE("a stored path is absolute, keeps its tilde and loses trailing slashes") {
    const TempDir tmp;
    const WorkingDirectory folder(tmp.path());

    CHECK(storedPath("a/b/") == tmp.path() + "/a/b");
    CHECK(storedPath("~/a/") == "~/a");
    CHECK(storedPath("/a//") == "/a");
    CHECK(storedPath("/") == "/");
    CHECK(storedPath(".") == tmp.path());
    CHECK(storedPath("./a/./../b/.") == tmp.path() + "/a/../b");
    CHECK(storedPath("~/./a") == "~/a");
    CHECK(storedPath("~") == "~");
}

TEST_CASE("a path for use has its tilde expanded") {
    const TempDir tmp;
    const UserHome home(tmp);

    CHECK(usablePath("~/a/", home.places()) == home / "a");
}

TEST_CASE("a color is six hexadecimal digits with or without a number sign") {
    CHECK(checkedColor("ff8800") == "ff8800");
    CHECK(checkedColor("#FF8800") == "#FF8800");
    for (const std::string text : {"", "#", "fff", "ff88000", "gg8800", "##f8800"}) {
        CAPTURE(text);
        CHECK(expectThrow<Refusal>([&] { checkedColor(text); }).kind == Refusal::Kind::badColor);
    }
}

} // namespace korvane::test
