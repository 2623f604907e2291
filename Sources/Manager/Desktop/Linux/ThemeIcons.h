#pragma once

#include "Ambrel/Base/Path.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace korvane::registration {

/// Pixels of a side of the icons that docks, menus and lists ask a theme for, largest first.
inline constexpr std::array<std::uint32_t, 7> themeSides{512, 256, 128, 64, 48, 32, 16};

struct ThemeIcon {
    std::uint32_t side;
    std::string png;
};

/// One picture for each of `themeSides` out of an icon file: the file's own of that size, else its
/// widest drawn at that size. None where there is no icon file, or none that can be read here: an
/// entry is worth having without.
std::vector<ThemeIcon> themeIconsOf(const ambrel::Path& iconFile) noexcept;

} // namespace korvane::registration
