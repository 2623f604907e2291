#pragma once

#include "korvane/CommandLine/Verb.h"

namespace korvane {

Verb createAppVerb();
Verb createWebVerb();
Verb createFileVerb();
Verb createCommandVerb();

} // namespace korvane
