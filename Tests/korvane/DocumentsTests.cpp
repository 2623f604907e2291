#include "Support/Expect.h"
#include "Support/Files.h"
#include "Support/Programs.h"
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

TEST_CASE("the manual lists every verb and has a page on each, with its options and notes") {
    auto verb = sample("list");
    verb.aliases = {"ls"};
    verb.examples = {"korvane list -t x"};
    const auto pages = documents::manual(".TH KORVANE 1 2026-11-21 \"Korvane @version@\"\n"
                                         "@commands@\nbehind\n@pages@\n"
                                         "@notes list@\nMore of list.\n"
                                         "@notes list --title@\nMore of it.\n",
                                         described({verb, sample("edit")}));

    CHECK(pages.size() == 4);
    const auto& text = pages.at("korvane.1");
    CHECK(contains(text, ".TP\n\\fBkorvane list \\fINAME\\fB \\fIFILE\\fB\\fR\nDo it.\nSee\n"
                         ".BR korvane\\-list (1).\nIn short\n.BR \"korvane ls\" .\n"));
    CHECK(contains(text, "behind\n.BR korvane\\-list (1),\n.BR korvane\\-edit (1)\n"));
    CHECK_FALSE(contains(text, "More of"));
    const auto& page = pages.at("korvane-list.1");
    CHECK(beginsWith(page, ".TH KORVANE\\-LIST 1 2026-11-21 \"Korvane 0."));
    CHECK(contains(page, ".SH NAME\nkorvane\\-list \\- do it\n"));
    CHECK(contains(page, ".SH DESCRIPTION\nDo it.\nMore of list.\nIn short\n"));
    CHECK(contains(page, ".TP\n\\fB\\-\\-in\\fR \\fIDIR\\fR\nLook in it's folder [a:b].\n"
                         "May be repeated.\n"));
    CHECK(contains(page, ".TP\n\\fB\\-t\\fR, \\fB\\-\\-title\\fR \\fITEXT\\fR\n"
                         "\\-n \\e free.\nMore of it.\n"));
    CHECK(contains(page, ".SH EXAMPLES\n.nf\nkorvane list \\-t x\n.fi\n"));
    CHECK_FALSE(contains(page, "@"));
    CHECK_FALSE(contains(page, "\\-\\-help"));
    CHECK(pages.at("korvane-ls.1") == ".so man1/korvane-list.1\n");
}

TEST_CASE("verbs of one group share a page, on which common options are told once") {
    auto more = sample("move that");
    more.declare = [](CLI::App& app, const Surroundings& surroundings) -> Action {
        static bool flag = false;
        options::flag(app, "--more", flag, "Only here");
        return sample("").declare(app, surroundings);
    };
    const auto pages = documents::manual("@commands@\n@notes move@\nOf all.\n"
                                         "@notes move --title@\nOf the title.\n"
                                         "@notes move that --more@\nOf more.\n",
                                         described({sample("move it"), more}));

    const auto& text = pages.at("korvane-move.1");
    CHECK(contains(text, "Do it.\n.SS \"korvane move that"));
    CHECK(contains(text, "\\fB\\-\\-more\\fR\nOnly here.\nOf more.\n"));
    CHECK(contains(text, ".SH OPTIONS\nOf all.\n.TP\n"));
    CHECK(contains(text, "Of the title.\n"));
    CHECK(text.find("\\-\\-title") == text.rfind("\\-\\-title"));
    CHECK(text.find("\\-\\-more") < text.find(".SH OPTIONS"));
    CHECK(pages.at("korvane-move-it.1") == ".so man1/korvane-move.1\n");
}

TEST_CASE("a note on an option of a group is told wherever the option is") {
    auto verbs = described({sample("move it"), sample("move that"), sample("move all")});
    std::erase_if(verbs[2].options,
                  [](const auto& option) { return option.names.back() == "--in"; });

    const auto text =
        documents::manual("@commands@\n@notes move --in@\nOf each.\n", verbs).at("korvane-move.1");

    const auto first = text.find("Of each.\n");
    CHECK(first < text.find(".SS \"korvane move that"));
    CHECK(text.find("Of each.\n", first + 1) > text.find(".SS \"korvane move that"));
    CHECK(text.rfind("Of each.\n") < text.find(".SS \"korvane move all"));
}

TEST_CASE("words that are set apart by their place are told without dashes") {
    auto verbs = described({sample("list")});
    verbs[0].rules = {.trailingAfter = 2};
    CHECK(contains(documents::manual("@commands@\n", verbs).at("korvane-list.1"),
                   "[\\-\\- \\fIARG\\fB ...]"));
    verbs[0].rules.apart = options::Apart::byPosition;
    CHECK(contains(documents::manual("@commands@\n", verbs).at("korvane-list.1"),
                   " [\\fIARG\\fB ...]"));
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
    const auto text = documents::manual("@configuration@\n", {}).at("korvane.1");

    CHECK(contains(text, ".TP\n\\fBshareUserFolders\\fR\n"));
    CHECK(contains(text, "It is true or false.\nHeeded for the kind app.\n"));
    CHECK(contains(text, "\\fBstrategy\\fR\nHow the application is isolated.\n"
                         "It is home\\-override, container\\-redirect, "
                         "wrapper\\-identity or unsupported.\n"));
    CHECK(contains(text, "Heeded for the kind app or command.\n"));
    CHECK(contains(text, "with \\-\\-replace \\-\\-bundle\\-id ID.\n"));
}

TEST_CASE("every page of the manual is one that is shown without a warning") {
    const std::string folder = KORVANE_TEST_SHARE "/man/man1";
    const bool hasGroff =
        run(ProgramSetup{.command = {"sh", "-c", "command -v groff"}}).status == 0;
    if (!hasGroff) MESSAGE("skipped: groff is not installed here");
    const auto names = namesIn(folder);
    for (const auto* name : {"korvane-create.1", "korvane-create-app.1", "korvane-ls.1"}) {
        CHECK(std::ranges::find(names, name) != names.end());
    }
    for (const auto& name : names) {
        CAPTURE(name);
        if (!hasGroff) break;
        // In its folder's parent, where ".so man1/…" is found.
        const auto done = run(ProgramSetup{
            .command = {"sh", "-c", "groff -s -man -ww -Tutf8 -P-c \"man1/$0\" 2>&1 >/dev/null",
                        name},
            .currentDirectory = KORVANE_TEST_SHARE "/man"});
        CHECK(done.status == 0);
        CHECK(done.output == "");
    }
}

} // namespace korvane::test
