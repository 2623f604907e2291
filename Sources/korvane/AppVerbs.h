#pragma once

#include "korvane/CommandLine.h"

namespace korvane {

Verb appsVerb();
Verb inspectVerb();

} // namespace korvane
