#include "Ambrel/Platform/FileSystem.h"
#include "Manager/Base/ManagerError.h"
#include "Manager/Base/NearestWord.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Rules/UserText.h"
#include "Support/Environment.h"
#include "Support/Expect.h"
#include "Support/Programs.h"
#include "korvane/CommandLine/Options.h"

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

    CHECK(usablePath("~/a/") == home / "a");
}

TEST_CASE("a color is six hexadecimal digits with or without a number sign") {
    CHECK(checkedColor("ff8800") == "ff8800");
    CHECK(checkedColor("#FF8800") == "#FF8800");
    for (const std::string text : {"", "#", "fff", "ff88000", "gg8800", "##f8800"}) {
        CAPTURE(text);
        expectThrow<UsageError>([&] { checkedColor(text); });
    }
}

TEST_CASE("a word for the shell comes back from the shell unchanged") {
    const Strings words{"plain", "",   "two words", "it's",      "$(x) `y` $z", "a\"b\\c", "*?[x]",
                        "~root", "-x", "Ça va 😀",   "semi;amp&", "<in >out|",   "#comment"};
    for (const auto& word : words) {
        CAPTURE(word);
        const auto done = run({"/bin/sh", "-c", "printf %s " + shellWord(word)});
        if (word == "~root") continue; // a tilde in front is meant to be expanded
        CHECK(done.output == word);
    }
}

TEST_CASE("the nearest word is one that differs by a slip") {
    const Strings verbs{"create", "list", "show", "open", "delete"};

    CHECK(nearest("crate", verbs) == "create");
    CHECK(nearest("lsit", verbs) == "list");
    CHECK(nearest("DELETE", verbs).empty());
    CHECK(nearest("xyzzy", verbs).empty());
    CHECK(nearest("", verbs).empty());
    CHECK(nearest(std::string(100000, 'a'), verbs).empty());
}

TEST_CASE("an empty value behind an equals sign stays with its option") {
    CLI::App app;
    std::string icon;
    std::string name;
    options::text(app, "--icon", icon, "");
    options::text(app, "NAME", name, "");

    const auto arranged = options::arrange(app, {"--icon=", "Mail"}, {});

    CHECK(arranged.parsed == Strings{"--icon", "", "Mail"});
    CHECK(arranged.trailing == Strings{});
}

TEST_CASE("an option's value that looks like an option is left alone") {
    CLI::App app;
    std::vector<std::string> args;
    options::texts(app, "--arg", args, "");

    CHECK(options::arrange(app, {"--arg", "--arg="}, {}).parsed == Strings{"--arg", "--arg="});
}

TEST_CASE("one option takes several values where the verb allows that") {
    CLI::App app;
    std::vector<std::string> set;
    std::string name;
    options::texts(app, "--set", set, "");
    options::text(app, "NAME", name, "");
    const options::Rules rules{.severalValues = true};

    CHECK(options::arrange(app, {"n", "--set", "a", "b", "--set", "c"}, rules).parsed ==
          Strings{"n", "--set", "a", "--set", "b", "--set", "c"});
    CHECK(options::arrange(app, {"--set", "a", "n"}, rules).parsed == Strings{"--set", "a", "n"});
    CHECK(options::arrange(app, {"n", "--set", "a", "b"}, {}).parsed ==
          Strings{"n", "--set", "a", "b"});
}

TEST_CASE("words behind two dashes are set apart once the verb has its own") {
    CLI::App app;
    std::string first;
    std::string second;
    options::text(app, "NAME", first, "");
    options::text(app, "PROGRAM", second, "");

    const auto usual = options::arrange(app, {"n", "p", "--", "-a", "--", "b"}, {2});
    CHECK(usual.parsed == Strings{"n", "p"});
    CHECK(usual.trailing == Strings{"-a", "--", "b"});

    const auto dashed = options::arrange(app, {"--", "-n", "p", "-a"}, {2});
    CHECK(dashed.parsed == Strings{"--", "-n", "p"});
    CHECK(dashed.trailing == Strings{"-a"});
}

} // namespace korvane::test
