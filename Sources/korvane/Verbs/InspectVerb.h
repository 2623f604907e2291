#pragma once

#include "korvane/CommandLine/Verb.h"

namespace korvane {

Verb inspectVerb();

} // namespace korvane
