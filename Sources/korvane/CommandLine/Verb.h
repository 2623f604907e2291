#pragma once

#include "korvane/CommandLine/Options.h"
#include "korvane/Output/Surroundings.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace korvane {

/// What a verb does once its words are known. The argument is what was set apart by the verb's
/// rules. Returns the exit status.
using Action = std::function<int(const std::vector<std::string>& trailing)>;

/// One verb of the command line, such as "list" or "create app".
struct Verb {
    std::string name;                  ///< one or two words
    std::string summary;               ///< one sentence
    std::vector<std::string> examples; ///< whole command lines
    /// Adds the verb's options to the parser and returns what it does.
    std::function<Action(CLI::App&, const Surroundings&)> declare;
    options::Rules rules{};
    std::string about{}; ///< "a command": what it is for, as an option of another verb is not
    /// Options that this system has no use for, and what to say to who gives one.
    std::vector<std::pair<std::string, std::string>> unoffered{};
    std::vector<std::string>
        aliases{}; ///< other first words for the same, where `name` is one word
};

} // namespace korvane
