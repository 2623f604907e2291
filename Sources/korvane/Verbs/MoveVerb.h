#pragma once

#include "korvane/CommandLine/Verb.h"

namespace korvane {

Verb moveVerb();

} // namespace korvane
