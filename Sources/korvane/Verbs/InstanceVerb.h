#pragma once

#include "korvane/CommandLine/Verb.h"

namespace korvane {

/// A verb whose only word names an instance, and which has no options. The action gets that word
/// and returns the exit status.
Verb instanceVerb(std::string name, std::string summary, std::string example,
                  const std::function<int(const std::string&, const Surroundings&)>& action);

} // namespace korvane
