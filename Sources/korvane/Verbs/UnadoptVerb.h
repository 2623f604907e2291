#pragma once

#include "korvane/CommandLine/Verb.h"

namespace korvane {

Verb unadoptVerb();

} // namespace korvane
