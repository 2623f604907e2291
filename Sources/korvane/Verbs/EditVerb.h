#pragma once

#include "korvane/CommandLine/Verb.h"

namespace korvane {

Verb editVerb();

} // namespace korvane
