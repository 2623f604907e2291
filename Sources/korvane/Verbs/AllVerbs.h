#pragma once

#include "korvane/CommandLine/Verb.h"

#include <vector>

namespace korvane {

/// The manager's verbs, in the order in which help lists them.
std::vector<Verb> allVerbs();

} // namespace korvane
