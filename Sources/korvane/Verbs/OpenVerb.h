#pragma once

#include "korvane/CommandLine/Verb.h"

namespace korvane {

Verb openVerb();

} // namespace korvane
