#include "korvane/Documents/Completions.h"

#include <set>

namespace korvane::documents {

namespace {

constexpr const char* head =
    R"sh(# Completion of korvane for fish. Made from the commands of korvane when it was built.

# What "korvane COMMAND… --json" has for the keys KEY|KEY; what has escapes is left to be typed.
function __korvane_texts
    korvane $argv[2..] --json 2>/dev/null |
        string replace --filter --regex '^    "(?:'$argv[1]')": "([^"\\\\]*)",?$' '$1'
end

function __korvane_begun_path
    # Files only where a path is begun.
    set -l word (commandline -ct)
    string match -q -r '/|^[.~]' -- $word; and __fish_complete_path $word
end

function __korvane_is
    # Whether the words so far begin with these.
    set -l words (commandline -opc)
    test (count $words) -gt (count $argv); or return 1
    for i in (seq (count $argv))
        test "$words[$(math $i + 1)]" = "$argv[$i]"; or return 1
    end
end

function __korvane_count
    # How many words stand behind the $argv[1] words of the command, and whether a value is next.
    set -l words (commandline -opc)
    set -l seen 0
    set -l value no
    for word in $words[(math $argv[1] + 2)..]
        if test $value = yes
            set value no
        else if contains -- $word $__korvane_valued
            set value yes
        else if not string match -q -- '-*' $word
            set seen (math $seen + 1)
        end
    end
    echo $seen
    echo $value
end

function __korvane_word
    # Whether word $argv[1] of the command that the others name is what comes next.
    __korvane_is $argv[2..]; or return 1
    set -l count (__korvane_count (math (count $argv) - 1))
    test $count[2] = no; and test (math $count[1] + 1) -eq $argv[1]
end

function __korvane_before
    # Whether word $argv[1] of the command that the others name is not there yet.
    __korvane_is $argv[2..]; or return 1
    set -l count (__korvane_count (math (count $argv) - 1))
    test $count[1] -lt $argv[1]
end

function __korvane_needs_verb
    test (count (commandline -opc)) -eq 1
end

function __korvane_needs_second
    set -l words (commandline -opc)
    test (count $words) -eq 2; and test "$words[2]" = $argv[1]
end

complete -c korvane -f
complete -c korvane -n __korvane_needs_verb -s V -l version -d 'Show the version'
)sh";

std::string fishWord(const std::string& text) {
    std::string result = "'";
    for (const char c : text) {
        if (c == '\'' || c == '\\') result += '\\';
        result += c;
    }
    return result + "'";
}

/// The flags of "complete" for what stands for a value.
std::string offer(const Values& values, const std::vector<std::string>& keys) {
    switch (values.takes) {
    case Takes::text:
        return {};
    case Takes::instance:
        return " -a '(__korvane_texts name list)'";
    case Takes::application:
        return " -a '(__korvane_texts \"name|identifier\" apps; __korvane_texts "
               "\"name|identifier\" "
               "apps --programs; __korvane_begun_path)'";
    case Takes::installed:
        return " -a '(__korvane_texts \"name|identifier\" apps --programs; __korvane_begun_path)'";
    case Takes::program:
        return " -F -a '(__fish_complete_command)'";
    case Takes::file:
    case Takes::folder:
    case Takes::address: // of a page on this machine, as far as the shell can know
        return " -F";
    case Takes::key:
        return " -a " + fishWord(joined(keys));
    case Takes::choice:
        return " -a " + fishWord(joined(values.choices));
    }
    return {};
}

/// True while this verb is typed, and none whose name only begins with it.
std::string conditionFor(const VerbDescription& verb, const std::vector<VerbDescription>& verbs,
                         const std::string& question) {
    auto text = question + " " + verb.name;
    if (!verb.secondWord().empty()) return fishWord(text);
    for (const auto* longer : verbsBelow(verbs, verb.name)) {
        text += "; and not __korvane_is " + longer->name;
    }
    return fishWord(text);
}

std::string optionLine(const std::string& condition, const OptionDescription& option,
                       const std::vector<std::string>& keys) {
    std::string text = "complete -c korvane -n " + condition;
    for (const auto& name : option.names) {
        text += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
    }
    if (!option.value.empty()) {
        const auto offered = offer(option.values, keys);
        text += (offered.find("-F") == std::string::npos ? " -x" : " -r") + offered;
    }
    return text + " -d " + fishWord(option.description) + "\n";
}

std::string linesFor(const VerbDescription& verb, const CompletionData& data) {
    std::string text;
    int number = 0;
    for (const auto& word : verb.words) {
        const auto offered = offer(word.values, data.keys);
        ++number;
        const auto question =
            word.repeats ? std::string("__korvane_is") : "__korvane_word " + std::to_string(number);
        if (offered.empty()) continue;
        text +=
            "complete -c korvane -n " + conditionFor(verb, data.verbs, question) + offered + "\n";
    }
    const bool isByPosition = verb.rules.apart == options::Apart::byPosition;
    const auto before = "__korvane_before " + std::to_string(number);
    if (verb.rules.trailingAfter) {
        const auto next = "__korvane_word " + std::to_string(number + 1);
        const auto behind = "__korvane_is " + verb.name + "; and not " + before;
        const auto question = isByPosition ? behind : next;
        text += "complete -c korvane -n " + conditionFor(verb, data.verbs, question) + " -F\n";
    }
    const std::string question = isByPosition ? before : "__korvane_is";
    for (const auto& option : verb.options) {
        text += optionLine(conditionFor(verb, data.verbs, question), option, data.keys);
    }
    return text;
}

/// Every option that takes a value, of any verb.
std::string valued(const std::vector<VerbDescription>& verbs) {
    std::set<std::string> names;
    for (const auto& verb : verbs) {
        for (const auto& option : verb.options) {
            if (!option.value.empty()) names.insert(option.names.begin(), option.names.end());
        }
    }
    return joined({names.begin(), names.end()});
}

std::string word(const std::string& condition, const std::string& text,
                 const std::string& summary) {
    return "complete -c korvane -n " + condition + " -a " + text + " -d " + fishWord(summary) +
           "\n";
}

} // namespace

std::string fishCompletion(const CompletionData& data) {
    std::string text = head;
    text += "set -g __korvane_valued " + valued(data.verbs) + "\n\n";
    for (const auto& first : firstWords(data.verbs)) {
        text += word("__korvane_needs_verb", first, summaryOf(data.verbs, first));
    }
    text += word("__korvane_needs_verb", "help", "Show help");
    for (const auto& verb : data.verbs) {
        if (verb.secondWord().empty()) continue;
        text += word(fishWord("__korvane_needs_second " + verb.firstWord()), verb.secondWord(),
                     verb.summary);
    }
    for (const auto& verb : data.verbs) {
        for (const auto& name : namesOf(verb)) {
            auto called = verb;
            called.name = name;
            text += "\n" + linesFor(called, data);
        }
    }
    return text;
}

} // namespace korvane::documents
