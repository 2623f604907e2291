#pragma once

#include "korvane/CommandLine.h"

namespace korvane {

Verb registerVerb();
Verb unregisterVerb();

} // namespace korvane
