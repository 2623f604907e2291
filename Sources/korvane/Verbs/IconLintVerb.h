#pragma once

#include "korvane/CommandLine/Verb.h"

namespace korvane {

Verb iconLintVerb();

} // namespace korvane
