#pragma once

#include "korvane/CommandLine/Verb.h"
#include "korvane/Verbs/EditOptions.h"

namespace korvane {

Verb editVerb();

/// What the verb does with these options. Returns the exit status.
int editInstance(const EditOptions& options, const Surroundings& surroundings);

} // namespace korvane
