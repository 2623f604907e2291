#pragma once

#include "korvane/CommandLine.h"

namespace korvane {

Verb profileCheckVerb();

} // namespace korvane
