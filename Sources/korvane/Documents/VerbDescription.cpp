#include "korvane/Documents/VerbDescription.h"

#include "korvane/CommandLine/Parser.h"

#include <algorithm>

namespace korvane::documents {

namespace {

OptionDescription optionFrom(const Parser& parser, const CLI::Option& option) {
    OptionDescription found;
    for (const auto& name : option.get_snames()) found.names.push_back("-" + name);
    for (const auto& name : option.get_lnames()) found.names.push_back("--" + name);
    if (option.get_items_expected_max() > 0) found.value = option.get_type_name();
    found.description = option.get_description();
    found.values = parser.valuesOf(option);
    found.repeats = option.get_multi_option_policy() == CLI::MultiOptionPolicy::TakeAll;
    return found;
}

VerbDescription describe(const Verb& verb, const Surroundings& surroundings) {
    Parser parser(verb.summary, verb.name);
    // What the verb does is not asked for, only what it takes.
    const auto action = verb.declare(parser, surroundings);
    VerbDescription found{.name = verb.name,
                          .summary = verb.summary,
                          .options = {},
                          .words = {},
                          .rules = verb.rules,
                          .aliases = verb.aliases,
                          .examples = verb.examples};
    for (const auto* option : static_cast<const CLI::App&>(parser).get_options()) {
        if (option->get_positional()) {
            found.words.push_back(
                {option->get_name(true), option->get_description(), parser.valuesOf(*option),
                 option->get_multi_option_policy() == CLI::MultiOptionPolicy::TakeAll});
        } else {
            found.options.push_back(optionFrom(parser, *option));
        }
    }
    return found;
}

} // namespace

std::string VerbDescription::firstWord() const { return name.substr(0, name.find(' ')); }

std::string VerbDescription::secondWord() const {
    const auto space = name.find(' ');
    return space == std::string::npos ? "" : name.substr(space + 1);
}

std::vector<VerbDescription> describe(const std::vector<Verb>& verbs,
                                      const Surroundings& surroundings) {
    std::vector<VerbDescription> descriptions;
    for (const auto& verb : verbs) descriptions.push_back(describe(verb, surroundings));
    return descriptions;
}

std::vector<std::string> firstWords(const std::vector<VerbDescription>& verbs) {
    std::vector<std::string> words;
    const auto add = [&](const std::string& word) {
        if (std::ranges::find(words, word) == words.end()) words.push_back(word);
    };
    for (const auto& verb : verbs) {
        add(verb.firstWord());
        for (const auto& alias : verb.aliases) add(alias);
    }
    return words;
}

std::vector<const VerbDescription*> verbsBelow(const std::vector<VerbDescription>& verbs,
                                               const std::string& first) {
    std::vector<const VerbDescription*> below;
    for (const auto& verb : verbs) {
        if (verb.firstWord() == first && !verb.secondWord().empty()) below.push_back(&verb);
    }
    return below;
}

const VerbDescription* findVerb(const std::vector<VerbDescription>& verbs,
                                const std::string& name) {
    const auto found = std::find_if(verbs.begin(), verbs.end(), [&](const auto& verb) {
        return verb.name == name || std::ranges::find(verb.aliases, name) != verb.aliases.end();
    });
    return found == verbs.end() ? nullptr : &*found;
}

std::string summaryOf(const std::vector<VerbDescription>& verbs, const std::string& first) {
    if (const auto* verb = findVerb(verbs, first)) return verb->summary;
    const auto below = verbsBelow(verbs, first);
    if (below.size() == 1) return below.front()->summary;
    std::vector<std::string> words;
    for (const auto* verb : below) words.push_back(verb->secondWord());
    return options::spokenList(words);
}

std::vector<std::string> namesOf(const VerbDescription& verb) {
    std::vector<std::string> names{verb.name};
    names.insert(names.end(), verb.aliases.begin(), verb.aliases.end());
    return names;
}

std::string joined(const std::vector<std::string>& words, const std::string& separator) {
    std::string text;
    for (const auto& word : words) text += (text.empty() ? "" : separator) + word;
    return text;
}

} // namespace korvane::documents
