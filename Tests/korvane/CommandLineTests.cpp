#include "Manager.h"

#include <sstream>

namespace korvane::test {

namespace {

const Strings verbs{
    "create app", "create web",    "create file", "create command", "adopt",   "list",   "show",
    "open",       "run",           "logs",        "edit",           "migrate", "delete", "apps",
    "inspect",    "profile check", "register",    "unregister",     "unadopt", "repair"};

Strings wordsOf(const std::string& verb, const Strings& more) {
    Strings words;
    const auto blank = verb.find(' ');
    words.push_back(verb.substr(0, blank));
    if (blank != std::string::npos) words.push_back(verb.substr(blank + 1));
    words.insert(words.end(), more.begin(), more.end());
    return words;
}

} // namespace

TEST_CASE("every verb has help on standard output, with the examples first") {
    const Manager manager;
    for (const auto& verb : verbs) {
        CAPTURE(verb);
        const auto help = manager.result(wordsOf(verb, {"--help"}));
        CHECK(help == manager.result(wordsOf(verb, {"-h"})));
        CHECK(help == manager.result([&] {
            auto words = wordsOf(verb, {});
            words.insert(words.begin(), "help");
            return words;
        }()));
        const auto examples = help.find("Examples:\n  korvane " + verb);
        REQUIRE(examples != std::string::npos);
        CHECK(examples < help.find("Usage: korvane " + verb));
        CHECK(contains(help, "--help"));
    }
}

TEST_CASE("the overview names every verb") {
    const Manager manager;

    const auto help = manager.result({"--help"});

    for (const auto& verb : verbs) {
        const auto name = "\n  " + verb;
        const bool isListed = contains(help, name + " ") || contains(help, name + ", ");
        CAPTURE(verb);
        CHECK(isListed);
    }
    CHECK(help == manager.result({"-h"}));
    CHECK(help == manager.result({"help"}));
    CHECK(help.find("Examples:") < help.find("Usage:"));
}

TEST_CASE("a group of verbs has help of its own") {
    const Manager manager;

    const auto help = manager.result({"create", "-h"});

    CHECK(contains(help, "create web"));
    CHECK_FALSE(contains(help, "profile check"));
}

TEST_CASE("the version is shown") {
    const Manager manager;
    CHECK(beginsWith(manager.result({"--version"}), "korvane "));
    CHECK(manager.result({"-V"}) == manager.result({"--version"}));
}

TEST_CASE("ls and rm are list and delete, and help says so") {
    const Manager manager;
    const auto bundle = manager.create({"command", "Work", aProgram});

    CHECK(manager.result({"ls", "--json"}) == manager.result({"list", "--json"}));
    CHECK(manager.result({"rm", "--help"}) == manager.result({"delete", "--help"}));
    CHECK(contains(manager.result({"help", "ls"}), "\nIn short: korvane ls\n"));
    CHECK(contains(manager.result({"--help"}), "\n  list, ls          List the instances.\n"));
    CHECK(manager.run({"rm", "Work"}).status == 0);
    CHECK_FALSE(isThere(bundle));
    CHECK(says(manager.refusal({"lz"}, 2), "Did you mean \"ls\"?"));
}

TEST_CASE("mv gives an instance another name, as edit does") {
    const Manager manager;
    manager.create({"command", "Work", aProgram});
    const auto before = manager.json({"show", "Work", "--json"});

    const auto renamed = manager.json({"mv", "Work", "Office", "--json"});

    CHECK(renamed["name"] == "Office");
    CHECK(renamed["identifier"] == before["identifier"]);
    CHECK(renamed["home"] == before["home"]);
    CHECK(renamed == manager.json({"show", "Office", "--json"}));
    manager.create({"command", "--home", "~/other", "Work", aProgram});
    CHECK(says(manager.refusal({"mv", "Work", "Office"}), "Office"));
    manager.refusal({"mv", "Work"}, 2);
}

TEST_CASE("help speaks of this system's desktop") {
    const Manager manager;
    for (const auto& verb : verbs) {
        CAPTURE(verb);
        const auto help = manager.result(wordsOf(verb, {"--help"}));
        CHECK_FALSE(contains(help, "Dock"));
        CHECK_FALSE(contains(help, "menu bar"));
    }
    CHECK(contains(manager.result({"create", "web", "--help"}), "Show an item in the panel"));
}

TEST_CASE("help is wrapped at the width of a terminal, and nowhere else") {
    const Manager manager;
    const auto widest = [](const std::string& text) {
        std::size_t most = 0;
        std::istringstream lines(text);
        for (std::string line; std::getline(lines, line);) {
            const bool isExample = line.starts_with("  korvane ");
            if (line.ends_with('\r')) line.pop_back();
            if (!isExample) most = std::max(most, line.size());
        }
        return most;
    };
    const auto onTerminal = [&](const std::string& columns, const Strings& words) {
        const ScopedVariable width("COLUMNS", columns);
        return manager.runOnTerminal(words, "").output;
    };
    const auto plain = manager.result({"create", "app", "--help"});

    const auto narrow = onTerminal("60", {"create", "app", "--help"});

    CHECK(widest(plain) > 100);
    CHECK(widest(narrow) <= 60);
    CHECK(contains(narrow, "\r\n                              ")); // an option's second line
    CHECK(widest(onTerminal("400", {"create", "app", "--help"})) <= 100);
    CHECK(widest(onTerminal("50", {"--help"})) <= 50);
    CHECK(widest(onTerminal("32", {"--help"})) <= 32);
    CHECK(widest(onTerminal("32", {"mv", "--help"})) <= 32);
    CHECK(contains(manager.result({"--help"}), "\n  leftovers delete  "));
    const ScopedVariable width("COLUMNS", "60");
    CHECK(manager.result({"create", "app", "--help"}) == plain);
}

TEST_CASE("no command is wrong usage and shows the overview as a message") {
    const Manager manager;

    const auto done = manager.run({});

    CHECK(done.status == 2);
    CHECK(done.output.empty());
    CHECK(contains(done.error, "Usage: korvane"));
}

TEST_CASE("a misspelt command is guessed at but not run") {
    const Manager manager;

    CHECK(manager.refusal({"lsit"}, 2) ==
          "korvane: \"lsit\" is no command. Did you mean \"list\"? See: korvane --help\n");
    CHECK(says(manager.refusal({"create", "comand", "n", "true"}, 2), "Did you mean \"command\"?"));
    CHECK(says(manager.refusal({"profile"}, 2), "wants one of: check"));
    CHECK(says(manager.refusal({"a\nb\xff"}, 2), "\"a\\nb\xef\xbf\xbd\" is no command"));
}

TEST_CASE("a misspelt option is guessed at") {
    const Manager manager;
    CHECK(says(manager.refusal({"list", "--jsno"}, 2), "Did you mean \"--json\"?"));
}

TEST_CASE("a missing or a superfluous word is wrong usage") {
    const Manager manager;

    CHECK(says(manager.refusal({"show"}, 2), "NAME is required"));
    CHECK(says(manager.refusal({"show", "a", "b"}, 2), "\"b\" is not expected"));
    CHECK(says(manager.refusal({"create", "file", "only-name"}, 2), "PATH is required"));
    CHECK(says(manager.refusal({"list", "--in"}, 2), "--in"));
}

TEST_CASE("a verb's name is an ordinary word for another verb") {
    const Manager manager;
    manager.create({"command", "list", aProgram});

    CHECK(contains(manager.result({"show", "list"}), "/list.app"));
}

TEST_CASE("messages have color on a terminal only, and not with NO_COLOR") {
    const Manager manager;

    CHECK(contains(manager.runOnTerminal({"show", "nobody"}, "").output, "\033["));
    const ScopedVariable noColor("NO_COLOR", "1");
    CHECK_FALSE(contains(manager.runOnTerminal({"show", "nobody"}, "").output, "\033["));
    CHECK_FALSE(contains(manager.run({"show", "nobody"}).error, "\033["));
}

TEST_CASE("a result that cannot be written is a failure") {
    const Manager manager;
    auto setup = manager.setup({"--help"});
    setup.command[2] = "exec \"$@\" </dev/null >/dev/full";

    CHECK(run(setup).status == 1);
}

TEST_CASE("what stands behind -- already is not told to go there") {
    const Manager manager;

    CHECK(says(manager.refusal({"run", "Work", "-e"}, 2), "goes behind \"--\""));
    const auto refusal = manager.refusal({"run", "Work", "--", "-e"}, 2);
    CHECK(says(refusal, "\"-e\" is not expected here. See: korvane run --help"));
}

} // namespace korvane::test
