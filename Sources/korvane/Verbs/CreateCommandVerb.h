#pragma once

#include "korvane/CommandLine/Verb.h"

namespace korvane {

Verb createCommandVerb();

} // namespace korvane
