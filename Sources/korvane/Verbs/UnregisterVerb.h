#pragma once

#include "korvane/CommandLine/Verb.h"

namespace korvane {

Verb unregisterVerb();

} // namespace korvane
