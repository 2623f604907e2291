#pragma once

#include "korvane/CommandLine.h"

namespace korvane {

Verb migrateVerb();

} // namespace korvane
