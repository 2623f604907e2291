#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace korvane {

/// The known word that `typed` was probably meant to be, or empty.
std::string nearest(std::string_view typed, const std::vector<std::string>& known);

} // namespace korvane
