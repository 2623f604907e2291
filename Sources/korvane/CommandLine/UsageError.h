#pragma once

#include <stdexcept>

namespace korvane {

/// The command line itself is wrong. The text is escaped already.
struct UsageError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

} // namespace korvane
