#pragma once

#include "korvane/CommandLine/Verb.h"

namespace korvane {

Verb registerVerb();

} // namespace korvane
