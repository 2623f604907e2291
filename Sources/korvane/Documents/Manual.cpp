#include "korvane/Documents/Manual.h"

#include "Ambrel/Instance/ConfigFields.h"
#include "korvane/Verbs/ConfigEdit.h"
#include "korvane/Version.h"

#include <algorithm>
#include <cctype>
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

/// The options in `shown`, with the notes on them, which may be on those of the whole group.
std::string optionList(const std::vector<OptionDescription>& shown, const std::string& verb,
                       Sheet& sheet) {
    const auto group = verb.substr(0, verb.find(' '));
    std::string text;
    for (const auto& option : shown) {
        if (isHelp(option)) continue;
        const auto& name = option.names.back();
        text += optionHead(option) + optionText(option) +
                sheet.noteOn({verb + " " + name, group + " " + name});
    }
    return text;
}

/// "korvane VERB WORD…" in bold, as roff goes on with it in a line that is bold.
std::string usageOf(const VerbDescription& verb) {
    auto text = "korvane " + roff(verb.name);
    for (const auto& word : verb.words) {
        text += " \\fI" + roff(word.name) + "\\fB" + (word.repeats ? "..." : "");
    }
    if (verb.rules.trailingAfter) {
        const bool isByDashes = verb.rules.apart == options::Apart::byDashes;
        text += isByDashes ? " [\\-\\- \\fIARG\\fB ...]" : " [\\fIARG\\fB ...]";
    }
    return text;
}

/// The options that every one of the verbs takes alike.
std::vector<OptionDescription> shared(const std::vector<const VerbDescription*>& verbs) {
    auto options = verbs.front()->options;
    std::erase_if(options, [&](const OptionDescription& option) {
        return !std::ranges::all_of(verbs, [&](const auto* verb) {
            return std::ranges::find(verb->options, option) != verb->options.end();
        });
    });
    return options;
}

std::string title(const std::string& name, const Sheet& sheet) {
    constexpr std::string_view begin = ".TH KORVANE ";
    auto large = name;
    for (auto& c : large) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    const auto at = sheet.text.find(begin);
    const auto rest = at == std::string::npos
                          ? "1\n"
                          : sheet.text.substr(at + begin.size(),
                                              sheet.text.find('\n', at) - at - begin.size() + 1);
    return ".TH " + roff(large) + " " + rest;
}

std::string decapitalized(std::string text) {
    if (!text.empty())
        text[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(text[0])));
    if (text.ends_with('.')) text.pop_back();
    return text;
}

std::string synopsis(const std::vector<const VerbDescription*>& verbs) {
    std::string text = ".SH SYNOPSIS\n";
    for (const auto* verb : verbs) {
        if (verb != verbs.front()) text += ".br\n";
        text += "\\fB" + usageOf(*verb) + "\\fR [\\fIOPTION\\fR]...\n";
    }
    return text;
}

/// One verb alone.
std::string description(const VerbDescription& verb, Sheet& sheet) {
    auto text = ".SH DESCRIPTION\n" + sentence(verb.summary) + sheet.noteOn({verb.name});
    for (const auto& alias : verb.aliases)
        text += "In short\n\\fBkorvane " + roff(alias) + "\\fR.\n";
    const auto list = optionList(verb.options, verb.name, sheet);
    return text + (list.empty() ? "" : ".SH OPTIONS\n" + list);
}

/// Verbs with the same first word: what they have in common is told once, behind them.
std::string descriptions(const std::vector<const VerbDescription*>& verbs, const std::string& first,
                         Sheet& sheet) {
    const bool isGroup = verbs.size() > 1 && !verbs.front()->secondWord().empty();
    const auto common = isGroup ? shared(verbs) : std::vector<OptionDescription>();
    std::string text = ".SH COMMANDS\n";
    for (const auto* verb : verbs) {
        auto own = verb->options;
        std::erase_if(own, [&](const auto& option) {
            return std::ranges::find(common, option) != common.end();
        });
        text += ".SS \"" + usageOf(*verb) + "\"\n" + sentence(verb->summary) +
                sheet.noteOn({verb->name}) + optionList(own, verb->name, sheet);
    }
    if (!isGroup) return text;
    return text + ".SH OPTIONS\n" + sheet.noteOn({first}) + optionList(common, first, sheet);
}

std::string examples(const std::vector<const VerbDescription*>& verbs) {
    std::string lines;
    for (const auto* verb : verbs) {
        for (const auto& example : verb->examples) lines += roff(example) + "\n";
    }
    return lines.empty() ? "" : ".SH EXAMPLES\n.nf\n" + lines + ".fi\n";
}

std::string pageName(const std::string& words) {
    auto name = "korvane-" + words;
    std::ranges::replace(name, ' ', '-');
    return name;
}

/// The page of all verbs that begin with `first`.
std::string page(const std::vector<VerbDescription>& all, const std::string& first, Sheet& sheet) {
    std::vector<const VerbDescription*> verbs;
    for (const auto& verb : all) {
        if (verb.firstWord() == first) verbs.push_back(&verb);
    }
    const bool isGroup = verbs.size() > 1 && findVerb(all, first) == nullptr;
    const auto about = (isGroup ? "korvane " + first + " " : "") + summaryOf(all, first);
    return title(pageName(first), sheet) + ".SH NAME\n" + roff(pageName(first)) + " \\- " +
           roff(decapitalized(about)) + "\n" + synopsis(verbs) +
           (verbs.size() == 1 ? description(*verbs.front(), sheet)
                              : descriptions(verbs, first, sheet)) +
           examples(verbs) + ".SH SEE ALSO\n.BR korvane (1)\n";
}

/// The verbs in one list, each with its page.
std::string commands(const std::vector<VerbDescription>& verbs) {
    std::string text;
    for (const auto& verb : verbs) {
        text += ".TP\n\\fB" + usageOf(verb) + "\\fR\n" + sentence(verb.summary) + "See\n.BR " +
                roff(pageName(verb.firstWord())) + " (1).\n";
        for (const auto& alias : verb.aliases) {
            text += "In short\n.BR \"korvane " + roff(alias) + "\" .\n";
        }
    }
    return text;
}

std::string seeAlso(const std::vector<VerbDescription>& verbs) {
    std::vector<std::string> pages;
    for (const auto& verb : verbs) {
        const auto entry = ".BR " + roff(pageName(verb.firstWord())) + " (1)";
        if (std::ranges::find(pages, entry) == pages.end()) pages.push_back(entry);
    }
    return joined(pages, ",\n") + "\n";
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

std::map<std::string, std::string> manual(const std::string& text,
                                          const std::vector<VerbDescription>& verbs) {
    Sheet sheet(text);
    sheet.replace("@commands@\n", commands(verbs));
    sheet.replace("@configuration@\n", configuration());
    sheet.replace("@pages@\n", seeAlso(verbs));
    sheet.replace("@version@", std::string(version));
    std::map<std::string, std::string> pages;
    for (const auto& verb : verbs) {
        const auto first = verb.firstWord();
        const auto file = pageName(first) + ".1";
        if (!pages.contains(file)) pages.emplace(file, page(verbs, first, sheet));
        // What else the verb is called leads to its page.
        for (const auto& name : namesOf(verb)) {
            pages.emplace(pageName(name) + ".1", ".so man1/" + file + "\n");
        }
    }
    sheet.requireAllUsed();
    pages.emplace("korvane.1", sheet.text);
    return pages;
}

} // namespace korvane::documents
