#pragma once

#include "Ambrel/Base/RawValue.h"
#include "korvane/CommandLine/Parser.h"

#include <optional>
#include <string>
#include <vector>

/// Options whose values are taken byte for byte: the parser's own conversions give "{}", "[a,b]"
/// and the like meanings that a value typed by a person must not have.
namespace korvane::options {

CLI::Option* text(CLI::App& app, const std::string& name, std::string& value,
                  const std::string& description);
CLI::Option* text(CLI::App& app, const std::string& name, std::optional<std::string>& value,
                  const std::string& description);
/// May be given several times; each time one value.
CLI::Option* texts(CLI::App& app, const std::string& name, std::vector<std::string>& values,
                   const std::string& description);
CLI::Option* flag(CLI::App& app, const std::string& name, bool& value,
                  const std::string& description);

/// "--option,!--no-option": the value stays absent where neither is given.
CLI::Option* choiceOf(CLI::App& app, const std::string& names, std::optional<bool>& value,
                      const std::string& description);

/// Says what the values of `option` stand for, where its name for them does not tell. A parser that
/// keeps no such thing is left as it is.
CLI::Option* taking(CLI::App& app, CLI::Option* option, Values values);

/// "bottom, center or top".
std::string spokenList(const std::vector<std::string>& words);

/// The raw values of `Enum`.
template <class Enum> std::vector<std::string> wordsOf() {
    std::vector<std::string> words;
    for (const auto& [ignored, raw] : ambrel::RawValues<Enum>::table) words.emplace_back(raw);
    return words;
}

/// An option for one of the raw values of `Enum`, which its help lists; `more` follows them. The
/// value is not checked.
template <class Enum>
CLI::Option* choice(CLI::App& app, const std::string& name, std::optional<std::string>& value,
                    const std::string& more = "") {
    const auto words = wordsOf<Enum>();
    return taking(app, text(app, name, value, spokenList(words) + more), {Takes::choice, words});
}

// What several verbs have.

/// The word NAME that says which instance is meant.
CLI::Option* instanceName(CLI::App& app, std::string& value);
/// One or more such words.
CLI::Option* instanceNames(CLI::App& app, std::vector<std::string>& values);
/// "--json".
CLI::Option* asJson(CLI::App& app, bool& value, const std::string& description = "Write JSON");

/// The command line as the parser is to see it, and what is set apart for the verb's own use.
struct Arguments {
    std::vector<std::string> parsed;
    std::vector<std::string> trailing;
};

/// What sets the words apart that a verb hands on.
enum class Apart {
    byDashes,   ///< the first "--", once the verb has its own words
    byPosition, ///< the last of the verb's own words; a "--" directly behind it is taken away
};

/// What a verb's command line may do beyond the usual.
struct Rules {
    /// How many words without an option are the verb's own, where others can be set apart behind
    /// them; absent: nothing is.
    std::optional<std::size_t> trailingAfter{};
    /// Behind the first word without an option, one that may be repeated may be followed by several
    /// values.
    bool severalValues = false;
    Apart apart = Apart::byDashes;

    /// How help shows the words that are set apart; empty where there are none.
    std::string trailingUsage() const;
};

/// Splits "--option=" with an empty value in two, which the parser would give the next word, and
/// applies `rules`.
Arguments arrange(const CLI::App& app, const std::vector<std::string>& words, const Rules& rules);

} // namespace korvane::options
