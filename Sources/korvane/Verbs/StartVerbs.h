#pragma once

#include "korvane/CommandLine/Verb.h"

namespace korvane {

Verb openVerb();
Verb runVerb();

} // namespace korvane
