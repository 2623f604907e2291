#include "Support/Expect.h"
#include "korvane/Documents/Completions.h"
#include "korvane/Documents/Manual.h"

#include <sstream>

namespace korvane::test {

enum class Direction { up, down };

} // namespace korvane::test

template <> struct ambrel::RawValues<korvane::test::Direction> {
    static constexpr std::array<std::pair<korvane::test::Direction, std::string_view>, 2> table{{
        {korvane::test::Direction::up, "up"},
        {korvane::test::Direction::down, "down"},
    }};
};

namespace korvane::test {

namespace {

/// Descriptions of verbs that are declared here.
std::vector<documents::VerbDescription> described(const std::vector<Verb>& verbs) {
    std::istringstream input;
    std::ostringstream output;
    const Surroundings surroundings{
        .input = input, .results = output, .messages = output, .environment = {}, .user = {}};
    return documents::describe(verbs, surroundings);
}

Verb sample(const std::string& name) {
    return {name, "Do it.", {}, [](CLI::App& app, const Surroundings&) -> Action {
                static std::string text;
                static std::optional<std::string> maybe;
                static std::vector<std::string> several;
                static bool flag = false;
                options::instanceName(app, text);
                options::text(app, "FILE", text, "What to read");
                options::texts(app, "--in", several, "Look in it's folder [a:b]")->type_name("DIR");
                options::text(app, "-t,--title", maybe, "-n \\ free");
                options::choice<Direction>(app, "--to", maybe, " (default: up)");
                options::asJson(app, flag);
                return [](const auto&) { return 0; };
            }};
}

const documents::OptionDescription& option(const documents::VerbDescription& verb,
                                           const std::string& name) {
    for (const auto& found : verb.options) {
        if (found.names.back() == name) return found;
    }
    throw std::runtime_error("no option " + name);
}

} // namespace

TEST_CASE("a verb is described by its declaration") {
    const auto verbs = described({sample("move it")});

    REQUIRE(verbs.size() == 1);
    const auto& verb = verbs.front();
    CHECK(verb.firstWord() == "move");
    CHECK(verb.secondWord() == "it");
    REQUIRE(verb.words.size() == 2);
    CHECK(verb.words[0].name == "NAME");
    CHECK((verb.words[0].values == Values{Takes::instance}));
    CHECK((verb.words[1].values == Values{Takes::file}));
    CHECK((option(verb, "--in").values == Values{Takes::folder}));
    CHECK(option(verb, "--in").repeats);
    CHECK((option(verb, "--title").values == Values{}));
    CHECK(option(verb, "--title").names == Strings{"-t", "--title"});
    CHECK_FALSE(option(verb, "--title").repeats);
    CHECK((option(verb, "--to").values == Values{Takes::choice, {"up", "down"}}));
    CHECK(option(verb, "--to").description == "up or down (default: up)");
    CHECK(option(verb, "--json").value.empty());
    CHECK(option(verb, "--help").value.empty());
}

TEST_CASE("first words are listed once, and tell what is below them") {
    const auto verbs = described({sample("move it"), sample("list"), sample("move that")});

    CHECK(documents::firstWords(verbs) == Strings{"move", "list"});
    CHECK(documents::verbsBelow(verbs, "move").size() == 2);
    CHECK(documents::verbsBelow(verbs, "list").empty());
    CHECK(documents::findVerb(verbs, "move") == nullptr);
    CHECK(documents::summaryOf(verbs, "move") == "it or that");
    CHECK(documents::summaryOf(verbs, "list") == "Do it.");
}

TEST_CASE("what means something to a shell is quoted in its completion") {
    const documents::CompletionData data{described({sample("list")}), {"a", "b"}};

    CHECK(contains(documents::zshCompletion(data),
                   R"('*--in=[Look in it'\''s folder \[a\:b\]]:DIR:_files -/')"));
    CHECK(contains(documents::zshCompletion(data), R"('(-t --title)-t[-n \\ free]:TEXT:')"));
    CHECK(contains(documents::fishCompletion(data),
                   R"(-l in -r -F -d 'Look in it\'s folder [a:b]')"));
    CHECK(contains(documents::fishCompletion(data), R"(-s t -l title -x -d '-n \\ free')"));
}

TEST_CASE("the manual has every verb, its words and options, and the notes on them") {
    const auto text = documents::manual("before\n@commands@\nafter @version@\n"
                                        "@notes list@\nMore of list.\n"
                                        "@notes list --title@\nMore of it.\n",
                                        described({sample("list")}));

    CHECK(beginsWith(text, "before\n.SS \"korvane list \\fINAME\\fB \\fIFILE\\fB\"\n"
                           "Do it.\nMore of list.\n"));
    CHECK(contains(text, ".TP\n\\fB\\-\\-in\\fR \\fIDIR\\fR\nLook in it's folder [a:b].\n"
                         "May be repeated.\n"));
    CHECK(contains(text, ".TP\n\\fB\\-t\\fR, \\fB\\-\\-title\\fR \\fITEXT\\fR\n"
                         "\\-n \\e free.\nMore of it.\n"));
    CHECK(contains(text, "after 0."));
    CHECK_FALSE(contains(text, "@"));
    CHECK_FALSE(contains(text, "\\-\\-help"));
}

TEST_CASE("verbs of one group with the same options have them told once") {
    const auto text = documents::manual("@commands@\n@notes move@\nOf all.\n",
                                        described({sample("move it"), sample("move that")}));

    CHECK(contains(text, "Do it.\n.SS \"korvane move that"));
    CHECK(contains(text, ".SS \"Options of korvane move\"\nOf all.\n.TP\n"));
    CHECK(text.find("\\-\\-title") == text.rfind("\\-\\-title"));
}

TEST_CASE("notes on a group are told with each verb whose options are its own") {
    auto verbs = described({sample("move it"), sample("move that")});
    verbs[1].options.pop_back();

    const auto text = documents::manual(
        "@commands@\n@notes move@\nOf all.\n@notes move --in@\nOf each.\n", verbs);

    CHECK(text.find("Of all.\n") == text.rfind("Of all.\n"));
    CHECK(text.find("Of each.\n") < text.find("korvane move that"));
    CHECK(text.rfind("Of each.\n") > text.find("korvane move that"));
}

TEST_CASE("words that are set apart by their place are told without dashes") {
    auto verbs = described({sample("list")});
    verbs[0].rules = {.trailingAfter = 2};
    CHECK(contains(documents::manual("@commands@\n", verbs), "[\\-\\- \\fIARG\\fB ...]"));
    verbs[0].rules.apart = options::Apart::byPosition;
    CHECK(contains(documents::manual("@commands@\n", verbs), " [\\fIARG\\fB ...]"));
}

TEST_CASE("notes on what there is not are a mistake") {
    const auto verbs = described({sample("list")});
    for (const std::string about : {"lost", "list --gone", "list --help"}) {
        CAPTURE(about);
        const auto error = expectThrow<std::runtime_error>(
            [&] { documents::manual("@commands@\n@notes " + about + "@\nx\n", verbs); });
        CHECK(contains(error.what(), "\"" + about + "\""));
    }
}

TEST_CASE("the manual tells every field of a configuration") {
    const auto text = documents::manual("@configuration@\n", {});

    CHECK(contains(text, ".TP\n\\fBshareUserFolders\\fR\n"));
    CHECK(contains(text, "It is true or false.\nHeeded for the kind app.\n"));
    CHECK(contains(text, "\\fBstrategy\\fR\nHow the application is isolated.\n"
                         "It is home\\-override, container\\-redirect, "
                         "wrapper\\-identity or unsupported.\n"));
    CHECK(contains(text, "Heeded for the kind app or command.\n"));
    CHECK(contains(text, "with \\-\\-replace \\-\\-bundle\\-id ID.\n"));
}

} // namespace korvane::test
