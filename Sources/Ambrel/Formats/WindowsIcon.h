#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ambrel {

/// Whether the bytes begin like an icon or cursor file of Windows.
bool isWindowsIcon(std::string_view file) noexcept;

/// The pictures of such a file in its order, each as a file of its own: a PNG, or an icon with one
/// picture. Pictures that do not lie inside the file are left out. A file has about ten; those
/// beyond the 64th are not read.
std::vector<std::string> picturesOfWindowsIcon(std::string_view file);

} // namespace ambrel
