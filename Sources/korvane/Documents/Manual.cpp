#include "korvane/Documents/Manual.h"

#include "Ambrel/Instance/ConfigFields.h"
#include "korvane/Verbs/ConfigEdit.h"
#include "korvane/Version.h"

#include <algorithm>
#include <map>
#include <set>
#include <sstream>
#include <stdexcept>

namespace korvane::documents {

namespace {

/// `text` as roff: with dashes that can be copied, and no line that is a request.
std::string roff(const std::string& text) {
    std::string result;
    for (const char c : text) {
        if (c == '\\') {
            result += "\\e";
        } else if (c == '-') {
            result += "\\-";
        } else {
            result += c;
        }
    }
    return (result.starts_with('.') || result.starts_with('\'') ? "\\&" : "") + result;
}

std::string bold(const std::string& text) { return "\\fB" + roff(text) + "\\fR"; }
std::string italic(const std::string& text) { return "\\fI" + roff(text) + "\\fR"; }

std::string sentence(const std::string& text) {
    return roff(text) + (text.ends_with('.') ? "\n" : ".\n");
}

/// The sheet without its notes, and those.
struct Sheet {
    std::string text;
    std::map<std::string, std::string> notes;
    std::set<std::string> used;

    explicit Sheet(const std::string& sheet) {
        constexpr std::string_view begin = "@notes ";
        std::istringstream lines(sheet);
        auto* target = &text;
        for (std::string line; std::getline(lines, line);) {
            if (line.starts_with(begin) && line.ends_with('@')) {
                target = &notes[line.substr(begin.size(), line.size() - begin.size() - 1)];
            } else {
                *target += line + "\n";
            }
        }
    }

    /// The notes on the first of `subjects` that has some.
    std::string noteOn(const std::vector<std::string>& subjects) {
        for (const auto& about : subjects) {
            const auto found = notes.find(about);
            if (found == notes.end()) continue;
            used.insert(about);
            return found->second;
        }
        return {};
    }

    void requireAllUsed() const {
        for (const auto& [about, ignored] : notes) {
            if (used.contains(about)) continue;
            throw std::runtime_error("The manual has notes on \"" + about +
                                     "\", which is no command or option.");
        }
    }

    /// Puts `by` in the place of every `what`.
    void replace(const std::string& what, const std::string& by) {
        for (auto at = text.find(what); at != std::string::npos;
             at = text.find(what, at + by.size())) {
            text.replace(at, what.size(), by);
        }
    }
};

std::string optionHead(const OptionDescription& option) {
    std::vector<std::string> names;
    for (const auto& name : option.names) names.push_back(bold(name));
    auto text = joined(names, ", ");
    if (!option.value.empty()) text += " " + italic(option.value);
    return ".TP\n" + text + "\n";
}

std::string optionText(const OptionDescription& option) {
    auto text = sentence(option.description);
    if (option.repeats) text += "May be repeated.\n";
    return text;
}

bool isHelp(const OptionDescription& option) { return option.names.back() == "--help"; }

/// With the notes on them, which may be on those of the whole group.
std::string optionList(const VerbDescription& verb, const std::string& about, Sheet& sheet) {
    std::string text;
    for (const auto& option : verb.options) {
        if (isHelp(option)) continue;
        const auto& name = option.names.back();
        text += optionHead(option) + optionText(option) +
                sheet.noteOn({about + " " + name, verb.firstWord() + " " + name});
    }
    return text;
}

std::string verbHead(const VerbDescription& verb) {
    auto text = "korvane " + verb.name;
    for (const auto& word : verb.words) {
        text += " \\fI" + roff(word.name) + "\\fB" + (word.repeats ? "..." : "");
    }
    if (verb.rules.trailingAfter) {
        const bool isByDashes = verb.rules.apart == options::Apart::byDashes;
        text += isByDashes ? " [\\-\\- \\fIARG\\fB ...]" : " [\\fIARG\\fB ...]";
    }
    return ".SS \"" + text + "\"\n";
}

/// How many verbs from `first` on are of one group and take the same options.
std::size_t alike(const std::vector<VerbDescription>& verbs, std::size_t first) {
    std::size_t end = first + 1;
    while (end < verbs.size() && !verbs[first].secondWord().empty() &&
           verbs[end].firstWord() == verbs[first].firstWord() &&
           verbs[end].options == verbs[first].options) {
        ++end;
    }
    return end - first;
}

bool isFirstOfGroup(const std::vector<VerbDescription>& verbs, std::size_t at) {
    const bool isOfTwo = !verbs[at].secondWord().empty();
    return isOfTwo && (at == 0 || verbs[at - 1].firstWord() != verbs[at].firstWord());
}

std::string commands(const std::vector<VerbDescription>& verbs, Sheet& sheet) {
    std::string text;
    for (std::size_t first = 0; first < verbs.size();) {
        const auto count = alike(verbs, first);
        for (auto at = first; at < first + count; ++at) {
            text +=
                verbHead(verbs[at]) + sentence(verbs[at].summary) + sheet.noteOn({verbs[at].name});
        }
        auto about = verbs[first].name;
        if (count > 1) {
            about = verbs[first].firstWord();
            text += ".SS \"Options of korvane " + about + "\"\n" + sheet.noteOn({about});
        } else if (isFirstOfGroup(verbs, first)) {
            text += sheet.noteOn({verbs[first].firstWord()});
        }
        text += optionList(verbs[first], about, sheet);
        first += count;
    }
    return text;
}

template <class T> constexpr bool isOptional = false;
template <class T> constexpr bool isOptional<std::optional<T>> = true;

/// What a value of the field looks like.
template <class T> std::string formOf(ambrel::FieldEdit::Form form) {
    if constexpr (isOptional<T>) return formOf<typename T::value_type>(form);
    if constexpr (std::is_same_v<T, bool>) return "true or false";
    if constexpr (std::is_same_v<T, std::vector<std::string>>) return "a list of texts";
    if constexpr (std::is_same_v<T, ambrel::StringMap>) return "a map of texts";
    if constexpr (std::is_same_v<T, ambrel::IconLabel>) {
        return "an object of text, colorHex and position, which is " +
               formOf<ambrel::IconLabel::Position>(form);
    }
    if constexpr (std::is_enum_v<T>) return options::spokenList(options::wordsOf<T>());
    using Form = ambrel::FieldEdit::Form;
    return form == Form::path || form == Form::expandedPath ? "a path" : "a text";
}

std::string kindsOf(ambrel::KindSet kinds) {
    std::vector<std::string> names;
    std::size_t all = 0;
    for (const auto& [kind, name] : ambrel::RawValues<ambrel::ShortcutKind>::table) {
        ++all;
        if (kinds.contains(kind)) names.emplace_back(name);
    }
    if (names.size() == all) return {};
    return "Heeded for the kind " + options::spokenList(names) + ".\n";
}

std::string configuration() {
    std::string text;
    ambrel::forEachField([&]<class T>(const ambrel::ConfigField<T>& field) {
        text += ".TP\n" + bold(field.key) + "\n" + sentence(field.description) + "It is " +
                sentence(formOf<T>(field.edit.form)) + kindsOf(field.kinds);
        if (field.edit.form != ambrel::FieldEdit::Form::byCreatingAgain) return;
        const auto option = edit::optionFor(field.key);
        text += option.empty() ? "It is changed by creating the instance again,\n" +
                                     sentence(edit::howToCreateAgain(field.key))
                               : "It is changed with\n" + bold("korvane edit " + option) + ".\n";
    });
    return text;
}

} // namespace

std::string manual(const std::string& text, const std::vector<VerbDescription>& verbs) {
    Sheet sheet(text);
    sheet.replace("@commands@\n", commands(verbs, sheet));
    sheet.replace("@configuration@\n", configuration());
    sheet.replace("@version@", std::string(version));
    sheet.requireAllUsed();
    return sheet.text;
}

} // namespace korvane::documents
