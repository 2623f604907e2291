#pragma once

#include "Ambrel/Instance/InstanceRegistry.h"
#include "korvane/CommandLine/Verb.h"

namespace korvane {

/// A verb whose only word names an instance, and which has no options. The action gets that word
/// and returns the exit status.
Verb instanceVerb(std::string name, std::string summary, std::string example,
                  const std::function<int(const std::string&, const Surroundings&)>& action);

/// The same with the option "--json", which the action gets too.
Verb instanceVerbWithJson(
    std::string name, std::string summary, std::string example,
    const std::function<int(const std::string&, bool asJson, const Surroundings&)>& action);

/// The instances that the words mean, each once, however often it is named. Throws as
/// requireInstance() does for the first that means none.
std::vector<ambrel::InstanceRecord> requireInstances(const std::vector<std::string>& names,
                                                     const Surroundings& surroundings);

/// attemptEach() for instances.
int forEach(const std::vector<ambrel::InstanceRecord>& records, const Surroundings& surroundings,
            const std::function<void(const ambrel::InstanceRecord&)>& action);

} // namespace korvane
