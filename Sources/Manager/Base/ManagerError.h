#pragma once

#include <stdexcept>

namespace korvane {

/// What was asked for is refused or failed; nothing was touched unless the text says otherwise.
/// The text may hold several lines; names in it are escaped already.
struct Refusal : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// The command line itself is wrong.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

} // namespace korvane
