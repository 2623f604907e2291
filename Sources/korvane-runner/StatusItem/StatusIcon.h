#pragma once

#include "Ambrel/Base/Path.h"
#include "korvane-runner/Desktop/StatusArea.h"

#include <array>
#include <cstdint>

namespace korvane::runner {

/// Where the picture of a status item comes from, the best first. Neither need exist.
struct StatusIconFiles {
    ambrel::Path own; ///< the wrapper's own icon file
    ambrel::Path
        app; ///< the bundle of the application, whose icon is the next; empty: there is none
};

/// The sides of a status item's picture in pixels, smallest first: 18 and 22 points, as menu bars
/// and panels have them, on ordinary displays and on those of twice the density.
inline constexpr std::array<std::uint32_t, 4> statusSides{18, 22, 36, 44};

/// The first of the pictures that can be read, whatever the format of its file, else a drawn one,
/// in all of those sizes. Never fails, and decodes as little as it can: somebody waits for it.
StatusImage menuBarImage(const StatusIconFiles& files, bool isTemplate) noexcept;

} // namespace korvane::runner
