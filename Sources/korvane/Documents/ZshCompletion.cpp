#include "korvane/Documents/Completions.h"

#include "Manager/Base/Quoting.h"

namespace korvane::documents {

namespace {

constexpr const char* head = R"sh(#compdef korvane
# Completion of korvane for zsh. Made from the commands of korvane when it was built.

# What "korvane COMMAND… --json" has for the keys KEY|KEY; what has escapes is left to be typed.
_korvane_texts() {
    local keys=$1
    shift
    local -a texts
    texts=(${(f)"$(korvane $@ --json 2>/dev/null |
        sed -nE 's/^    "('$keys')": "([^"\\]*)",?$/\2/p')"})
    compadd -a texts
}

_korvane_instances() {
    _korvane_texts name list
    _files -g '*.app(-/)'
}

# Files only where a path is begun.
_korvane_begun_path() {
    [[ $PREFIX == (*/*|[.~]*) ]] && _files
}

_korvane_applications() {
    _korvane_texts 'name|identifier' apps
    _korvane_installed
}

_korvane_installed() {
    _korvane_texts 'name|identifier' apps --programs
    _korvane_begun_path
}

_korvane_programs() {
    _alternative 'commands:command:_command_names -e' 'files:file:_files'
}

_korvane() {
)sh";

/// `text` with a backslash in front of each of `characters`, which mean something where it stands.
std::string escaped(const std::string& text, std::string_view characters) {
    std::string result;
    for (const char c : text) {
        if (c == '\\' || characters.find(c) != std::string_view::npos) result += '\\';
        result += c;
    }
    return result;
}

std::string actionFor(const Values& values, const std::vector<std::string>& keys) {
    switch (values.takes) {
    case Takes::text:
        return {};
    case Takes::instance:
        return "_korvane_instances";
    case Takes::application:
        return "_korvane_applications";
    case Takes::program:
        return "_korvane_programs";
    case Takes::installed:
        return "_korvane_installed";
    case Takes::file:
        return "_files";
    case Takes::folder:
        return "_files -/";
    case Takes::address:
        return "_urls";
    case Takes::key:
        return "(" + joined(keys) + ")";
    case Takes::choice:
        return "(" + joined(values.choices) + ")";
    }
    return {};
}

/// One option as _arguments wants it: one that may not be repeated shuts out its other name.
std::string optionArguments(const OptionDescription& option, const std::vector<std::string>& keys) {
    std::string more = "[" + escaped(option.description, "[]:") + "]";
    if (!option.value.empty()) {
        more += ":" + escaped(option.value, ":") + ":" + actionFor(option.values, keys);
    }
    std::string text;
    for (const auto& name : option.names) {
        std::string before;
        if (option.repeats) before = "*";
        if (!option.repeats && option.names.size() > 1) before = "(" + joined(option.names) + ")";
        const bool isLong = name.starts_with("--");
        const std::string sign = isLong && !option.value.empty() ? "=" : "";
        text += " \\\n            " + shellQuoted(before + name + sign + more);
    }
    return text;
}

std::string arguments(const VerbDescription& verb, const std::vector<std::string>& keys) {
    std::vector<std::string> names;
    for (const auto& name : namesOf(verb)) names.push_back(shellQuoted(name));
    std::string text = "    " + joined(names, " | ") + ")\n        _arguments";
    for (const auto& option : verb.options) text += optionArguments(option, keys);
    const bool isByPosition = verb.rules.apart == options::Apart::byPosition;
    std::size_t number = 0;
    for (const auto& word : verb.words) {
        // Behind the word that begins with an exclusion of "-" no option is offered any more.
        const bool endsOptions = isByPosition && number + 1 == verb.rules.trailingAfter;
        const auto place = word.repeats ? "*" : std::to_string(++number);
        text += " \\\n            " + shellQuoted((endsOptions ? "(-)" : "") + place + ":" +
                                                  word.name + ":" + actionFor(word.values, keys));
    }
    if (verb.rules.trailingAfter) text += " \\\n            '*:argument:_files'";
    return text + "\n        ;;\n";
}

std::string described(const std::string& word, const std::string& summary) {
    return "            " + shellQuoted(escaped(word, ":") + ":" + escaped(summary, ":")) + "\n";
}

/// A list of words for _describe, and the call.
std::string describing(const std::string& words) {
    return "        local -a commands\n        commands=(\n" + words +
           "        )\n        _describe command commands\n";
}

/// What can follow the first word of a command of two.
std::string second(const std::vector<VerbDescription>& verbs, const std::string& first) {
    std::string words;
    for (const auto* verb : verbsBelow(verbs, first)) {
        words += described(verb->secondWord(), verb->summary);
    }
    if (words.empty()) return {};
    std::string text = "    " + first + ")\n" + describing(words);
    if (findVerb(verbs, first) == nullptr) text += "        return\n";
    return text + "        ;;\n";
}

} // namespace

std::string zshCompletion(const CompletionData& data) {
    std::string words;
    std::string seconds;
    for (const auto& word : firstWords(data.verbs)) {
        words += described(word, summaryOf(data.verbs, word));
        seconds += second(data.verbs, word);
    }
    words += described("help", "Show help");
    std::string pairs;
    std::string all;
    for (const auto& verb : data.verbs) {
        all += arguments(verb, data.keys);
        if (!verb.secondWord().empty())
            pairs += (pairs.empty() ? "" : " | ") + shellQuoted(verb.name);
    }
    return head + ("    if ((CURRENT == 2)); then\n" + describing(words)) +
           "        return\n    fi\n"
           "    local verb=$words[2]\n"
           "    shift words\n"
           "    ((CURRENT--))\n"
           "    ((CURRENT == 2)) && case $verb in\n" +
           seconds +
           "    esac\n"
           "    ((CURRENT > 2)) && case \"$verb $words[2]\" in\n    " +
           pairs +
           ")\n"
           "        verb=\"$verb $words[2]\"\n"
           "        shift words\n"
           "        ((CURRENT--))\n"
           "        ;;\n"
           "    esac\n"
           "    case $verb in\n" +
           all + "    esac\n}\n\n_korvane \"$@\"\n";
}

} // namespace korvane::documents
