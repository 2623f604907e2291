#pragma once

#include "korvane/CommandLine/Verb.h"

namespace korvane {

Verb logsVerb();

} // namespace korvane
