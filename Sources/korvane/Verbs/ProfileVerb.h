#pragma once

#include "korvane/CommandLine/Verb.h"

namespace korvane {

Verb profileCheckVerb();

} // namespace korvane
