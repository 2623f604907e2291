#pragma once

#include "korvane-runner/Desktop/WebWindow.h"

namespace korvane::runner {

/// The page in the place of one that is not there, in HTML: what happened, in plain words, the
/// engine's reason, and a link to try again. Without a script, and with nothing loaded from
/// anywhere.
std::string failurePage(const LoadFailure& failure);

} // namespace korvane::runner
