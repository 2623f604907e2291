#include "korvane/CommandLine/CommandLine.h"

#include "Ambrel/Base/Utf8.h"
#include "Manager/Base/NearestWord.h"
#include "Manager/Base/Quoting.h"
#include "korvane/CommandLine/HelpFormatter.h"
#include "korvane/CommandLine/Options.h"
#include "korvane/CommandLine/UsageError.h"
#include "korvane/Output/Wrapping.h"
#include "korvane/Version.h"

#include <algorithm>
#include <ostream>

namespace korvane {

namespace {

bool asksForHelp(const std::string& word) { return word == "-h" || word == "--help"; }

bool isCalled(const Verb& verb, const std::string& name) {
    return verb.name == name || std::ranges::find(verb.aliases, name) != verb.aliases.end();
}

/// "list, ls".
std::string allNames(const Verb& verb) {
    auto names = verb.name;
    for (const auto& alias : verb.aliases) names += ", " + alias;
    return names;
}

/// One with the summary beside the names, which take `nameColumns`, or below where there is no
/// room.
std::string commandRow(const Verb& verb, std::size_t nameColumns,
                       std::optional<std::size_t> width) {
    constexpr std::size_t indent = 2;
    constexpr std::size_t deeper = 6;
    constexpr std::size_t leastRoom = 24;
    const auto names = std::string(indent, ' ') + allNames(verb);
    const auto column = indent + nameColumns;
    if (width && *width < column + leastRoom) {
        return names + "\n" + std::string(deeper, ' ') + wrapped(verb.summary, deeper, width) +
               "\n";
    }
    return names + std::string(column - names.size(), ' ') + wrapped(verb.summary, column, width) +
           "\n";
}

/// With two blanks behind the longest.
std::size_t nameColumnsFor(const std::vector<Verb>& verbs) {
    std::size_t columns = 0;
    for (const auto& verb : verbs) columns = std::max(columns, allNames(verb).size());
    return columns + 2;
}

std::string firstWord(const std::string& name) { return name.substr(0, name.find(' ')); }

void addUnlessKnown(std::vector<std::string>& names, const std::string& name) {
    if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(name);
}

std::string guess(const std::string& typed, const std::vector<std::string>& known) {
    const auto meant = nearest(typed, known);
    return meant.empty() ? "" : " Did you mean \"" + meant + "\"?";
}

std::vector<std::string> optionNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const auto* option : app.get_options()) {
        for (const auto& name : option->get_lnames()) names.push_back("--" + name);
    }
    return names;
}

/// The commands beside `verb` that take `option`, as they are typed.
std::string commandsWith(const std::string& option, const Verb& verb,
                         const std::vector<Verb>& verbs, const Surroundings& surroundings) {
    std::string commands;
    for (const auto& other : verbs) {
        if (firstWord(other.name) != firstWord(verb.name)) continue;
        Parser app(other.summary, other.name);
        const auto action = other.declare(app, surroundings);
        if (app.get_option_no_throw(option) == nullptr) continue;
        commands += (commands.empty() ? "korvane " : ", korvane ") + other.name;
    }
    return commands;
}

/// Refuses an option that other verbs of its group have, or other systems.
void refuseWithoutEffect(const std::string& option, const Verb& verb,
                         const std::vector<Verb>& verbs, const Surroundings& surroundings) {
    for (const auto& [name, sentence] : verb.unoffered) {
        if (name == option) throw UsageError(sentence);
    }
    if (verb.about.empty() || !option.starts_with("--")) return;
    const auto commands = commandsWith(option, verb, verbs, surroundings);
    if (commands.empty()) return;
    throw UsageError(option + " means nothing to " + verb.about + ": it belongs to: " + commands);
}

bool isBehindDashes(const std::string& word, const std::vector<std::string>& words) {
    const auto dashes = std::ranges::find(words, "--");
    return std::find(dashes, words.end(), word) != words.end();
}

[[noreturn]] void refuseExtras(const CLI::App& app, const std::vector<std::string>& words,
                               const Verb& verb, const std::vector<Verb>& verbs,
                               const Surroundings& surroundings) {
    auto extras = app.remaining();
    std::erase(extras, "--");
    const auto first = extras.empty() ? std::string("--") : extras.front();
    const auto name = first.substr(0, first.find('='));
    refuseWithoutEffect(name, verb, verbs, surroundings);
    const auto meant = name.starts_with("--") ? guess(name, optionNames(app)) : "";
    throw UsageError(inQuotes(first) + " is not expected here." + meant +
                     (first.starts_with('-') && !isBehindDashes(first, words)
                          ? " What begins with \"-\" but is no option goes behind \"--\"."
                          : "") +
                     " See: korvane " + verb.name + " --help");
}

int parseAndRun(const Verb& verb, const std::vector<Verb>& verbs,
                const std::vector<std::string>& words, const Surroundings& surroundings) {
    Parser app(verb.summary, "korvane " + verb.name);
    app.formatter(std::make_shared<HelpFormatter>(verb, surroundings.width));
    const auto action = verb.declare(app, surroundings);
    auto [parsed, trailing] = options::arrange(app, words, verb.rules);
    std::reverse(parsed.begin(), parsed.end());
    try {
        app.parse(std::move(parsed));
    } catch (const CLI::CallForHelp&) {
        surroundings.results << app.help();
        return 0;
    } catch (const CLI::ParseError& error) {
        // A mistyped option also leaves a required word missing; it is the better thing to name.
        if (app.remaining_size() > 0) refuseExtras(app, words, verb, verbs, surroundings);
        throw UsageError(ambrel::utf8::oneLine(error.what()) + ". See: korvane " + verb.name +
                         " --help");
    }
    return action(trailing);
}

} // namespace

CommandLine::CommandLine(std::vector<Verb> verbs) : verbs_(std::move(verbs)) {}

int CommandLine::run(const std::vector<std::string>& words,
                     const Surroundings& surroundings) const {
    if (words.empty()) {
        surroundings.messages << overview("", std::nullopt);
        throw UsageError("Which command?");
    }
    const auto& first = words.front();
    if (first == "--version" || first == "-V") {
        surroundings.results << "korvane " << version << '\n';
        return 0;
    }
    if (asksForHelp(first) || first == "help") {
        return help({words.begin() + 1, words.end()}, surroundings);
    }
    if (words.size() == 2 && asksForHelp(words[1]) && find(first) == nullptr) {
        return help({first}, surroundings);
    }
    const auto& verb = requireVerb(words);
    const auto used = verb.name.find(' ') == std::string::npos ? 1 : 2;
    return parseAndRun(verb, verbs_, {words.begin() + used, words.end()}, surroundings);
}

const Verb* CommandLine::find(const std::string& name) const {
    const auto found = std::find_if(verbs_.begin(), verbs_.end(),
                                    [&](const Verb& verb) { return isCalled(verb, name); });
    return found == verbs_.end() ? nullptr : &*found;
}

const Verb& CommandLine::requireVerb(const std::vector<std::string>& words) const {
    const auto& first = words.front();
    if (words.size() > 1) {
        if (const auto* verb = find(first + " " + words[1])) return *verb;
    }
    if (const auto* verb = find(first)) return *verb;
    const auto below = namesBelow(first);
    if (below.empty()) {
        throw UsageError(inQuotes(first) + " is no command." + guess(first, namesBelow("")) +
                         " See: korvane --help");
    }
    const auto typed = words.size() > 1 ? words[1] : "";
    std::string list;
    for (const auto& name : below) list += (list.empty() ? "" : ", ") + name;
    throw UsageError(inQuotes(first) + " wants one of: " + list + "." + guess(typed, below) +
                     " See: korvane " + first + " --help");
}

/// The second words of the verbs that begin with `group`, or the first words of all of them.
std::vector<std::string> CommandLine::namesBelow(const std::string& group) const {
    std::vector<std::string> names;
    for (const auto& verb : verbs_) {
        if (group.empty()) {
            addUnlessKnown(names, firstWord(verb.name));
            for (const auto& alias : verb.aliases) addUnlessKnown(names, alias);
        }
        if (!group.empty() && verb.name.starts_with(group + " ")) {
            names.push_back(verb.name.substr(group.size() + 1));
        }
    }
    return names;
}

std::string CommandLine::overview(const std::string& group,
                                  std::optional<std::size_t> width) const {
    constexpr std::size_t usualWidth = 80;
    const auto about =
        wrapped("korvane runs several isolated copies of an application, and turns a "
                "web site, a document or a command into an application of its own.",
                0, width.value_or(usualWidth));
    auto text = group.empty() ? about + "\n\n" : "";
    text += "Examples:\n";
    for (const auto& verb : verbs_) {
        const bool shown = group.empty() ? verb.name == "adopt" || verb.name == "create app" ||
                                               verb.name == "open" || verb.name == "list"
                                         : verb.name.starts_with(group + " ");
        if (shown && !verb.examples.empty()) text += "  " + verb.examples.front() + "\n";
    }
    const auto words = group.empty() ? std::string() : group + " ";
    text += "\n" + wrapped("Usage: korvane " + words + "COMMAND [OPTIONS]", 0, width) + "\n\n";
    text += "Commands:\n";
    const auto columns = nameColumnsFor(verbs_);
    for (const auto& verb : verbs_) {
        if (!group.empty() && !verb.name.starts_with(group + " ")) continue;
        text += commandRow(verb, columns, width);
    }
    text += "\n" +
            wrapped("korvane COMMAND --help tells more about one command; korvane --version shows "
                    "the version.",
                    0, width) +
            "\n";
    return text;
}

int CommandLine::help(const std::vector<std::string>& words,
                      const Surroundings& surroundings) const {
    if (words.empty() || asksForHelp(words.front())) {
        surroundings.results << overview("", surroundings.width);
        return 0;
    }
    if (words.size() == 1 && find(words.front()) == nullptr && !namesBelow(words.front()).empty()) {
        surroundings.results << overview(words.front(), surroundings.width);
        return 0;
    }
    return parseAndRun(requireVerb(words), verbs_, {"--help"}, surroundings);
}

} // namespace korvane
