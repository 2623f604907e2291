#pragma once

#include "korvane/CommandLine/Verb.h"

namespace korvane {

Verb iconVerb();
Verb iconLintVerb();

} // namespace korvane
