#pragma once

#include "korvane/CommandLine/Verb.h"

namespace korvane {

Verb stopVerb();

} // namespace korvane
