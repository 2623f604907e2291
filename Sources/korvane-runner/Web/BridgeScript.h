#pragma once

#include <string_view>

namespace korvane::runner {

/// The text of Bridge.js, which the build puts into the program.
extern const std::string_view bridgeScript;

/// The name under which the script's messages arrive: window.webkit.messageHandlers.NAME.
inline constexpr const char* bridgeHandler = "korvane";

} // namespace korvane::runner
