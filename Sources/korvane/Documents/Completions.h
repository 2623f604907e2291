#pragma once

#include "korvane/Documents/VerbDescription.h"

namespace korvane::documents {

/// What completions are made of.
struct CompletionData {
    std::vector<VerbDescription> verbs;
    std::vector<std::string> keys; ///< of the configuration, offered for Takes::key
};

/// Scripts that teach a shell to complete the command lines of korvane. They ask korvane itself for
/// the names of instances and applications.
std::string bashCompletion(const CompletionData& data);
std::string zshCompletion(const CompletionData& data);
std::string fishCompletion(const CompletionData& data);

} // namespace korvane::documents
