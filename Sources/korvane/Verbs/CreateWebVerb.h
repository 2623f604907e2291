#pragma once

#include "korvane/CommandLine/Verb.h"

namespace korvane {

Verb createWebVerb();

} // namespace korvane
