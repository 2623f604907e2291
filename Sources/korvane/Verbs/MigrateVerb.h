#pragma once

#include "korvane/CommandLine/Verb.h"

namespace korvane {

Verb migrateVerb();

} // namespace korvane
