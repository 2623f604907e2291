#pragma once

#include "korvane/CommandLine.h"

namespace korvane {

Verb logsVerb();

} // namespace korvane
