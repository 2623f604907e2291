#include "korvane/CommandLine/Options.h"

#include "Support/Expect.h"

namespace korvane::test {

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

TEST_CASE("words behind the verb's own are set apart without dashes where the verb wants that") {
    CLI::App app;
    std::string first;
    std::string second;
    std::vector<std::string> variables;
    options::text(app, "NAME", first, "");
    options::text(app, "PROGRAM", second, "");
    options::texts(app, "--env", variables, "");
    const options::Rules rules{.trailingAfter = 2, .apart = options::Apart::byPosition};
    const auto arranged = [&](const Strings& words) { return options::arrange(app, words, rules); };

    const auto plain = arranged({"--env", "a", "n", "--env", "b", "p", "-x", "--env=", "--", "y"});
    CHECK(plain.parsed == Strings{"--env", "a", "n", "--env", "b", "p"});
    CHECK(plain.trailing == Strings{"-x", "--env=", "--", "y"});

    CHECK(arranged({"n", "p", "--", "-x", "--", "y"}).trailing == Strings{"-x", "--", "y"});
    CHECK(arranged({"n", "p"}).trailing == Strings{});

    const auto dashed = arranged({"--", "-n", "p", "-a"});
    CHECK(dashed.parsed == Strings{"--", "-n", "p"});
    CHECK(dashed.trailing == Strings{"-a"});
}

} // namespace korvane::test
