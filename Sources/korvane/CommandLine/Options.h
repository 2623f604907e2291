#pragma once

#include <CLI/CLI.hpp>

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

/// The command line as the parser is to see it, and what stands after "--" for the verb's own use.
struct Arguments {
    std::vector<std::string> parsed;
    std::vector<std::string> trailing;
};

/// What a verb's command line may do beyond the usual.
struct Rules {
    /// What follows the first "--" is set apart once so many words without an option have been
    /// seen; absent: nothing is.
    std::optional<std::size_t> trailingAfter{};
    /// Behind the first word without an option, one option may be followed by several values.
    bool severalValues = false;
};

/// Splits "--option=" with an empty value in two, which the parser would give the next word, and
/// applies `rules`.
Arguments arrange(const CLI::App& app, const std::vector<std::string>& words, const Rules& rules);

} // namespace korvane::options
