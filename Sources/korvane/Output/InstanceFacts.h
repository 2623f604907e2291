#pragma once

#include "Ambrel/Instance/InstanceRegistry.h"
#include "Ambrel/Platform/UserPlaces.h"
#include "Manager/Programs/SessionBus.h"

#include <string>
#include <vector>

namespace korvane {

/// One thing that is told of an instance beside its configuration. The word is the same in tables
/// and in JSON.
struct InstanceFact {
    const char* word;
    std::string text; ///< as it is, unescaped
};

/// What is told of an instance, in order; what does not apply is left out.
std::vector<InstanceFact> factsOf(const ambrel::InstanceRecord& record,
                                  const ambrel::UserPlaces& user);

/// What is told of how an application's instance stands to the session's bus; nothing where
/// programs do not meet on one.
std::vector<InstanceFact> factsOf(const BusStanding& standing);

} // namespace korvane
