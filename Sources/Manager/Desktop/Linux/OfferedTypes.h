#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace korvane::registration {

/// The types in `list`, separated by ";", that a desktop entry can name (Desktop Entry
/// Specification, MimeType): each once, in their order.
std::vector<std::string> mimeTypesIn(std::string_view list);

} // namespace korvane::registration
