#pragma once

#include <optional>

namespace korvane::runner {

/// Where a window stands and how large its content is, in the desktop's own units.
struct WindowFrame {
    struct Position {
        int x = 0;
        int y = 0;
        bool operator==(const Position&) const = default;
    };

    int width = 0;
    int height = 0;
    /// The upper left corner of the window with its decorations; absent where the desktop leaves it
    /// to itself where windows stand, or where it is not known.
    std::optional<Position> position;
    bool maximized = false; ///< the size is the one to go back to

    bool operator==(const WindowFrame&) const = default;
};

} // namespace korvane::runner
