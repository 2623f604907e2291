#pragma once

#include <string>
#include <string_view>

namespace korvane::registration {

/// Those of `list`, separated by ";", that an entry may carry by the Desktop Menu Specification,
/// each once, each with ";" behind it. Empty when no main category is among them: a menu would not
/// know where to show the entry.
std::string usableCategories(std::string_view list);

} // namespace korvane::registration
