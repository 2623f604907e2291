#pragma once

#include "korvane/Options.h"
#include "korvane/Surroundings.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace korvane {

/// What a verb does once its words are known. The argument is what stood after "--", for a verb
/// that wants it. Returns the exit status.
using Action = std::function<int(const std::vector<std::string>& trailing)>;

/// One verb of the command line, such as "list" or "create app".
struct Verb {
    std::string name;                  ///< one or two words
    std::string summary;               ///< one sentence
    std::vector<std::string> examples; ///< whole command lines
    /// Adds the verb's options to the parser and returns what it does.
    std::function<Action(CLI::App&, const Surroundings&)> declare;
    options::Rules rules{};
};

/// Finds the verb, reads its options and runs it, or shows help.
class CommandLine {
public:
    CommandLine();
    explicit CommandLine(std::vector<Verb> verbs);

    /// `words` is the command line without the program's name. Returns the exit status. Throws
    /// UsageError for a command line that cannot be understood, and whatever the verb throws.
    int run(const std::vector<std::string>& words, const Surroundings& surroundings) const;

private:
    const Verb* find(const std::string& name) const;
    const Verb& requireVerb(const std::vector<std::string>& words) const;
    std::vector<std::string> namesBelow(const std::string& group) const;
    std::string overview(const std::string& group) const;
    int help(const std::vector<std::string>& words, const Surroundings& surroundings) const;

    std::vector<Verb> verbs_;
};

/// The manager's verbs, in the order in which help lists them.
std::vector<Verb> allVerbs();

} // namespace korvane
