#pragma once

#include <CLI/CLI.hpp>

#include <map>
#include <string>
#include <vector>

namespace korvane {

/// What a word on the command line stands for.
enum class Takes {
    text, ///< free text
    instance,
    application,
    program,
    installed, ///< a program that can become an application
    file,      ///< or a folder
    folder,
    address,
    key, ///< of the configuration
    choice,
};

/// What a verb takes for one option or word; completions offer it.
struct Values {
    Takes takes = Takes::text;
    std::vector<std::string> choices{}; ///< of Takes::choice

    bool operator==(const Values&) const = default;
};

/// A parser that also keeps what the values of its options stand for.
class Parser final : public CLI::App {
public:
    Parser(std::string description, std::string name);

    void declare(const CLI::Option* option, Values values);
    /// What was declared; else what the name of the value in help tells, as in "--home DIR".
    Values valuesOf(const CLI::Option& option) const;

private:
    std::map<const CLI::Option*, Values> declared_;
};

} // namespace korvane
