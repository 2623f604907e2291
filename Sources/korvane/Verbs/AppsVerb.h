#pragma once

#include "korvane/CommandLine/Verb.h"

namespace korvane {

Verb appsVerb();

} // namespace korvane
