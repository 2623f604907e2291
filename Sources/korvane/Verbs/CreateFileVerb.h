#pragma once

#include "korvane/CommandLine/Verb.h"

namespace korvane {

Verb createFileVerb();

} // namespace korvane
