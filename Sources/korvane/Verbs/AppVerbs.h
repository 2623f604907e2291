#pragma once

#include "korvane/CommandLine/Verb.h"

namespace korvane {

Verb appsVerb();
Verb inspectVerb();

} // namespace korvane
