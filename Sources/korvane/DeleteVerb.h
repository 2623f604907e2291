#pragma once

#include "korvane/CommandLine.h"

namespace korvane {

Verb deleteVerb();

} // namespace korvane
