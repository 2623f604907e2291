#pragma once

#include "Ambrel/Platform/ProcessEnvironment.h"
#include "Ambrel/Platform/UserPlaces.h"

#include <iosfwd>
#include <optional>

namespace korvane {

/// What the manager is started with; made once by main and passed down.
struct Surroundings {
    std::istream& input;
    std::ostream& results;  ///< standard output: what was asked for, and nothing else
    std::ostream& messages; ///< standard error: what happened, warnings, suggestions
    bool inputIsTerminal = false;
    bool messagesAreTerminal = false;
    bool useColor = false; ///< for messages
    /// Of the terminal that shows the results, in columns; absent where they go elsewhere: nothing
    /// is shortened or wrapped then.
    std::optional<std::size_t> width{};
    ambrel::Environment environment;
    ambrel::UserPlaces user; ///< for whom all this is done
};

} // namespace korvane
