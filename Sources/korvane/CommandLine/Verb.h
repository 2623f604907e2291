#pragma once

#include "korvane/CommandLine/Options.h"
#include "korvane/Output/Surroundings.h"

#include <functional>
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

} // namespace korvane
