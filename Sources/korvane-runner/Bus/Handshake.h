#pragma once

#include "korvane-runner/Bus/Checked.h"

#include <cstddef>
#include <string>

namespace korvane::runner::bus {

/// Where in what a program writes the messages begin (D-Bus Specification, "Authentication
/// Protocol"). Before them it has words with the bus, which pass as they are: the identity and the
/// descriptors that they agree on are the bus's.
class ClientHandshake {
public:
    /// How many of the next bytes belong to it; behind them, where there are more, the first
    /// message begins. A fault where the bus would not go on listening.
    Checked<std::size_t> take(std::string_view bytes);

    bool isOver() const { return isOver_; }

private:
    bool endsLine(char byte);

    std::string line_; ///< what there is of the line that has no end yet
    bool hasBegun_ = false;
    bool isOver_ = false;
};

/// Likewise in what the bus writes.
class BusHandshake {
public:
    /// Likewise; the first byte of a message is not taken.
    Checked<std::size_t> take(std::string_view bytes);

    bool isOver() const { return isOver_; }

private:
    std::size_t lineLength_ = 0;
    bool isOver_ = false;
};

} // namespace korvane::runner::bus
