#pragma once

#include "korvane/CommandLine/Verb.h"

namespace korvane {

Verb iconVerb();

} // namespace korvane
