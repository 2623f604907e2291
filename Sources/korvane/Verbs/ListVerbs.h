#pragma once

#include "korvane/CommandLine/Verb.h"

namespace korvane {

Verb listVerb();
Verb showVerb();

/// The folders that --in names, for use now; absent where the option was not given.
std::optional<std::vector<std::string>> searchFolders(const std::vector<std::string>& given,
                                                      const ambrel::UserPlaces& user);

} // namespace korvane
