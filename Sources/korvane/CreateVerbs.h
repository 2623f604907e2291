#pragma once

#include "korvane/CommandLine.h"

namespace korvane {

Verb createAppVerb();
Verb createWebVerb();
Verb createFileVerb();
Verb createCommandVerb();

} // namespace korvane
