#pragma once

#include <string_view>

namespace korvane::runner::bus {

/// Whether the text of a desktop entry (Desktop Entry Specification) is that of an application that
/// menus show: one with windows, as a service in the background has none.
bool isShownApplication(std::string_view text);

} // namespace korvane::runner::bus
