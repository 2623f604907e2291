#pragma once

#include "korvane/CommandLine.h"

namespace korvane {

Verb iconVerb();
Verb iconLintVerb();

} // namespace korvane
