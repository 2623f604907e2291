#pragma once

#include "korvane/CommandLine/Verb.h"

namespace korvane {

Verb listVerb();

} // namespace korvane
