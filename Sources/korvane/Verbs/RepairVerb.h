#pragma once

#include "korvane/CommandLine/Verb.h"

namespace korvane {

Verb repairVerb();

} // namespace korvane
