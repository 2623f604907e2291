#pragma once

#include "korvane/CommandLine.h"

namespace korvane {

Verb openVerb();
Verb runVerb();

} // namespace korvane
