#pragma once

#include "korvane/CommandLine/Verb.h"

namespace korvane {

Verb adoptVerb();

} // namespace korvane
