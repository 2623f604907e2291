#pragma once

#include <string>
#include <string_view>

namespace korvane::registration {

/// The main categories of the Desktop Menu Specification in `list`, separated by ";": each once,
/// each with ";" behind it. They alone say in which menus an entry stands; what else a program
/// names refines that within a menu, if at all. Empty when there is none.
std::string mainCategoriesIn(std::string_view list);

} // namespace korvane::registration
