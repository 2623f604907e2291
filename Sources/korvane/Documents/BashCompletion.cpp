#include "korvane/Documents/Completions.h"

#include <map>

namespace korvane::documents {

namespace {

constexpr const char* head =
    R"sh(# Completion of korvane for bash. Made from the commands of korvane when it was built.

# What "korvane COMMAND… --json" has for the keys KEY|KEY, one on a line; what has escapes is left to
# be typed.
_korvane_texts() {
    local keys=$1
    shift
    korvane "$@" --json 2>/dev/null |
        sed -nE 's/^    "('"$keys"')": "([^"\\]*)",?$/\2/p'
}

# Takes the arguments of compgen, one match on a line.
_korvane_offer() {
    mapfile -t COMPREPLY < <(compgen "$@")
}

# Offers the lines of standard input that begin with the word. The shell quotes them.
_korvane_offer_lines() {
    local word=$1 line
    while IFS= read -r line; do
        [[ $line == "$word"* ]] && COMPREPLY+=("$line")
    done
}

# Offers what stands for $taken.
_korvane_offer_taken() {
    local word=$1
    case $taken in
    text) return ;;
    choice) _korvane_offer -W "$choices" -- "$word" && return ;;
    key) _korvane_offer -W "$keys" -- "$word" && return ;;
    folder) _korvane_offer -d -- "$word" && return ;;
    instance) _korvane_offer_lines "$word" < <(_korvane_texts name list) ;;
    application | installed)
        _korvane_offer_lines "$word" < <(
            {
                [[ $taken == installed ]] || _korvane_texts 'name|identifier' apps
                _korvane_texts 'name|identifier' apps --programs
            } | sort -u
        )
        # Files only where a path is begun.
        [[ $word == */* || $word == [.~]* ]] || return
        ;;
    program) [[ -n $word && $word != */* ]] && _korvane_offer -c -- "$word" ;;
    esac
    # A bundle, document or program by its path.
    ((${#COMPREPLY[@]})) || _korvane_offer -f -- "$word"
}
)sh";

constexpr const char* tail = R"sh(
_korvane() {
    local word=${COMP_WORDS[COMP_CWORD]} verb=${COMP_WORDS[1]} first=2
    local options='' valued='' words=() several='' trailing='' apart='' taken=text choices=''
    COMPREPLY=()
    if ((COMP_CWORD == 1)); then
        _korvane_offer -W "$commands help --help -V --version" -- "$word"
        return
    fi
    ((COMP_CWORD == 2)) && _korvane_second "$verb" "$word" && return
    if ((COMP_CWORD > 2)) && [[ " $pairs " == *" $verb/${COMP_WORDS[2]} "* ]]; then
        verb="$verb ${COMP_WORDS[2]}"
        first=3
    fi
    _korvane_command "$verb"

    # Options with their values, and how many words stand before this one.
    local at index=0 dashed='' before='' last=''
    for ((at = first; at < COMP_CWORD; at++)); do
        if [[ -n $apart && $index -ge ${#words[@]} ]]; then
            dashed=yes # all of it is the program's own
            ((index++))
        elif [[ -n $dashed ]]; then
            ((index++))
        elif [[ ${COMP_WORDS[at]} == -- ]]; then
            dashed=yes
        elif [[ ${COMP_WORDS[at]} == '=' ]]; then
            ((at++)) # bash takes "a=b" for three words
        elif [[ " $valued " == *" ${COMP_WORDS[at]} "* ]]; then
            before=${COMP_WORDS[at]} last=$before
            [[ ${COMP_WORDS[at + 1]} == '=' ]] && ((at++))
            ((++at < COMP_CWORD)) && before=''
        elif [[ ${COMP_WORDS[at]} != -* ]]; then
            ((index++))
        fi
    done
    [[ -n $apart && $index -ge ${#words[@]} ]] && dashed=yes
    [[ $word == '=' ]] && word=''

    if [[ -z $before && -z $dashed && $word == -* ]]; then
        _korvane_offer -W "$options" -- "$word"
        return
    fi
    if [[ -z $before && -n $several && $index -ge ${#words[@]} ]]; then
        before=$last # one more value for the same option
    fi
    if [[ -n $before ]]; then
        _korvane_value "$verb" "$before"
    else
        taken=${words[index]:-${trailing:-text}}
    fi
    _korvane_offer_taken "$word"
}

complete -o filenames -F _korvane korvane
)sh";

std::string nameOf(Takes takes) {
    switch (takes) {
    case Takes::text:
        return "text";
    case Takes::instance:
        return "instance";
    case Takes::application:
        return "application";
    case Takes::program:
        return "program";
    case Takes::installed:
        return "installed";
    case Takes::file:
    case Takes::address: // of a page on this machine, as far as the shell can know
        return "file";
    case Takes::folder:
        return "folder";
    case Takes::key:
        return "key";
    case Takes::choice:
        return "choice";
    }
    return {};
}

/// The verb as a pattern of "case", which its aliases fit too.
std::string casePattern(const VerbDescription& verb) {
    std::vector<std::string> quoted;
    for (const auto& name : namesOf(verb)) quoted.push_back("'" + name + "'");
    return joined(quoted, " | ");
}

std::vector<std::string> optionsOf(const VerbDescription& verb, bool onlyWithValue) {
    std::vector<std::string> names;
    for (const auto& option : verb.options) {
        if (onlyWithValue && option.value.empty()) continue;
        names.insert(names.end(), option.names.begin(), option.names.end());
    }
    return names;
}

std::string command(const VerbDescription& verb) {
    std::vector<std::string> words;
    for (const auto& word : verb.words) words.push_back(nameOf(word.values.takes));
    std::string text = "    " + casePattern(verb) + ")\n        options='" +
                       joined(optionsOf(verb, false)) + "'\n        valued='" +
                       joined(optionsOf(verb, true)) + "'\n";
    if (!words.empty()) text += "        words=(" + joined(words) + ")\n";
    if (!words.empty() && verb.words.back().repeats) {
        text += "        trailing='" + words.back() + "'\n";
    }
    if (verb.rules.trailingAfter) text += "        trailing='file'\n";
    if (verb.rules.apart == options::Apart::byPosition) text += "        apart=yes\n";
    if (verb.rules.severalValues) text += "        several=yes\n";
    return text + "        ;;\n";
}

/// The options of one verb by what their values stand for. Free text is what is left.
std::string values(const VerbDescription& verb) {
    std::map<std::string, std::vector<std::string>> optionsBy;
    for (const auto& option : verb.options) {
        const auto takes = option.values.takes;
        if (option.value.empty() || takes == Takes::text) continue;
        auto assignment = "taken='" + nameOf(takes) + "'";
        if (takes == Takes::choice)
            assignment += " choices='" + joined(option.values.choices) + "'";
        auto& names = optionsBy[assignment];
        names.insert(names.end(), option.names.begin(), option.names.end());
    }
    if (optionsBy.empty()) return {};
    std::string text = "    " + casePattern(verb) + ")\n        case $2 in\n";
    for (const auto& [assignment, names] : optionsBy) {
        text += "        " + joined(names, " | ") + ") " + assignment + " ;;\n";
    }
    return text + "        esac\n        ;;\n";
}

/// What can follow the first word of a command of two.
std::string second(const std::vector<VerbDescription>& verbs, const std::string& first) {
    std::vector<std::string> words;
    for (const auto* verb : verbsBelow(verbs, first)) words.push_back(verb->secondWord());
    if (words.empty()) return {};
    if (findVerb(verbs, first) == nullptr) {
        return "    " + first + ") _korvane_offer -W '" + joined(words) + " --help' -- \"$2\" ;;\n";
    }
    // Not in the way of a file, while nothing is typed.
    return "    " + first + ") [[ -n $2 ]] && _korvane_offer -W '" + joined(words) +
           "' -- \"$2\" && ((${#COMPREPLY[@]})) ;;\n";
}

} // namespace

std::string bashCompletion(const CompletionData& data) {
    std::vector<std::string> pairs;
    std::string commands;
    std::string allValues;
    for (const auto& verb : data.verbs) {
        commands += command(verb);
        allValues += values(verb);
        if (!verb.secondWord().empty()) pairs.push_back(verb.firstWord() + "/" + verb.secondWord());
    }
    const auto first = joined(firstWords(data.verbs));
    std::string seconds;
    for (const auto& word : firstWords(data.verbs)) seconds += second(data.verbs, word);
    std::string text = head;
    text += "\n# Offers the second word of a command; fails where there is none.\n"
            "_korvane_second() {\n    case $1 in\n" +
            seconds + "    help) _korvane_offer -W '" + first +
            "' -- \"$2\" ;;\n    *) false ;;\n    esac\n}\n";
    text += "\n# The options of a command, those with a value, and what its words stand for.\n"
            "_korvane_command() {\n    case $1 in\n" +
            commands + "    esac\n}\n";
    text += "\n# What the value of an option of a command stands for.\n"
            "_korvane_value() {\n    case $1 in\n" +
            allValues + "    esac\n}\n";
    std::string rest = tail;
    const std::string place = "    COMPREPLY=()\n";
    rest.insert(rest.find(place), "    local commands='" + first + "'\n    local pairs='" +
                                      joined(pairs) + "'\n    local keys='" + joined(data.keys) +
                                      "'\n");
    return text + rest;
}

} // namespace korvane::documents
