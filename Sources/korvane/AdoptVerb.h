#pragma once

#include "korvane/CommandLine.h"

namespace korvane {

Verb adoptVerb();

} // namespace korvane
