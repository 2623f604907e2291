#pragma once

#include "korvane/CommandLine/Verb.h"

namespace korvane {

Verb showVerb();

} // namespace korvane
