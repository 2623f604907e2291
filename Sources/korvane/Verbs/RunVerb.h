#pragma once

#include "korvane/CommandLine/Verb.h"

namespace korvane {

Verb runVerb();

} // namespace korvane
