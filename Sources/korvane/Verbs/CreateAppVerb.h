#pragma once

#include "korvane/CommandLine/Verb.h"

namespace korvane {

Verb createAppVerb();

} // namespace korvane
