#pragma once

#include "korvane/CommandLine.h"

namespace korvane {

Verb editVerb();

} // namespace korvane
