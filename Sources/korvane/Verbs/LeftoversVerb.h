#pragma once

#include "korvane/CommandLine/Verb.h"

namespace korvane {

Verb leftoversVerb();
Verb leftoversDeleteVerb();

} // namespace korvane
