#include "Manager.h"

#include <regex>

namespace korvane::test {

namespace {

std::string source(const std::string& name) {
    return readFile(std::string(KORVANE_TEST_SOURCES) + "/" + name);
}

/// The long options that the help of a verb lists.
std::set<std::string> optionsIn(const std::string& help) {
    std::set<std::string> options;
    const std::regex pattern("\n  (?:-[a-z],)?--([a-z-]+)");
    for (auto found = std::sregex_iterator(help.begin(), help.end(), pattern);
         found != std::sregex_iterator(); ++found) {
        options.insert((*found)[1]);
    }
    return options;
}

const std::vector<Strings> verbs{{"create", "app"},
                                 {"create", "web"},
                                 {"create", "file"},
                                 {"create", "command"},
                                 {"adopt"},
                                 {"list"},
                                 {"show"},
                                 {"open"},
                                 {"run"},
                                 {"logs"},
                                 {"edit"},
                                 {"migrate"},
                                 {"register"},
                                 {"unregister"},
                                 {"delete"},
                                 {"apps"},
                                 {"inspect"},
                                 {"profile", "check"},
                                 {"icon"},
                                 {"icon", "lint"}};

} // namespace

TEST_CASE("the manual and the completions know every verb and option") {
    const Manager manager;
    const auto manual = source("Documentation/korvane.1");
    const Strings completions{source("Sources/korvane/completions/korvane.bash"),
                              source("Sources/korvane/completions/_korvane"),
                              source("Sources/korvane/completions/korvane.fish")};
    for (auto words : verbs) {
        const auto verb = words.back();
        words.emplace_back("--help");
        for (const auto& option : optionsIn(manager.result(words))) {
            CAPTURE(verb);
            CAPTURE(option);
            // roff writes a dash that is typed as "\-".
            const auto inRoff = std::regex_replace(option, std::regex("-"), "\\-");
            CHECK(contains(manual, "\\-\\-" + inRoff));
            for (const auto& completion : completions) CHECK(contains(completion, option));
        }
        CHECK(contains(manual, verb));
        for (const auto& completion : completions) CHECK(contains(completion, verb));
    }
}

TEST_CASE("bash completes verbs, options and the names of instances") {
    const Manager manager;
    manager.create({"command", "Two words", aProgram});
    const auto complete = [&](const std::string& words, int current) {
        const auto done = run(ProgramSetup{
            .command = {"bash", "-c",
                        "korvane() { " + test::quoted(KORVANE_TEST_MANAGER) + " \"$@\"; }; . " +
                            test::quoted(std::string(KORVANE_TEST_SOURCES) +
                                         "/Sources/korvane/completions/korvane.bash") +
                            "; COMP_WORDS=(" + words + "); COMP_CWORD=" + std::to_string(current) +
                            "; _korvane; printf '%s\\n' \"${COMPREPLY[@]}\""}});
        CHECK(done.error.empty());
        return done.output;
    };

    CHECK(complete("korvane mi", 1) == "migrate\n");
    CHECK(complete("korvane create co", 2) == "command\n");
    CHECK(complete("korvane delete --da", 2) == "--data\n");
    CHECK(complete("korvane show Tw", 2) == "Two words\n");
}

} // namespace korvane::test
