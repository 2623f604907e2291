#pragma once

#include <string>
#include <vector>

namespace korvane {

/// How an installed program is started.
struct ProgramCall {
    std::string program; ///< a path, or a name to look up in PATH
    /// The arguments before and behind the place of files that are to be opened.
    std::vector<std::string> before;
    std::vector<std::string> behind;

    bool hasArguments() const { return !before.empty() || !behind.empty(); }
};

} // namespace korvane
