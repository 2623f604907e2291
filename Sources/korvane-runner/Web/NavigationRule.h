#pragma once

#include "korvane-runner/Desktop/WebWindow.h"

namespace korvane::runner {

/// Where an address leads that a page wants to go to.
enum class Destination {
    view,                 ///< it stays in the window
    otherProgram,         ///< what people expect to leave it: a letter, a call, a message
    otherProgramIfWanted, ///< whatever else some program has registered for: the person is asked
    nowhere,
};

/// The window is a browser for web pages; the rest of the schemes belongs to other programs. A page
/// alone starts none: only a click does.
Destination destinationOf(const NavigationRequest& request);

/// The scheme of `url` in lower case, without the colon; empty where it has none.
std::string schemeOf(std::string_view url);

} // namespace korvane::runner
