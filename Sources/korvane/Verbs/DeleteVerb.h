#pragma once

#include "korvane/CommandLine/Verb.h"

namespace korvane {

Verb deleteVerb();

} // namespace korvane
