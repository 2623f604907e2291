#include "korvane/Verbs/StopVerb.h"

#include "Manager/Base/Quoting.h"
#include "Manager/Operations/Stopping.h"
#include "korvane/CommandLine/Options.h"
#include "korvane/Output/Messages.h"
#include "korvane/Verbs/InstanceVerb.h"

#include <memory>

namespace korvane {

namespace {

void stopInstance(const ambrel::InstanceRecord& record, const Surroundings& surroundings) {
    const auto name = inQuotes(record.config.displayName);
    if (stop(record, surroundings.user) == Stopped::wasNotRunning) {
        say(surroundings, name + " is not running.");
    } else {
        say(surroundings, "Stopped " + name + ".");
    }
}

std::string summary() {
    return "Ask what runs of instances to end, and wait up to " +
           std::to_string(stoppingTime.count()) + " seconds for it.";
}

} // namespace

Verb stopVerb() {
    return {"stop",
            summary(),
            {"korvane stop Work", "korvane stop Work Private"},
            [](CLI::App& app, const Surroundings& surroundings) -> Action {
                const auto names = std::make_shared<std::vector<std::string>>();
                options::instanceNames(app, *names);
                return [names, &surroundings](const auto&) {
                    return forEach(requireInstances(*names, surroundings), surroundings,
                                   [&](const auto& record) { stopInstance(record, surroundings); });
                };
            }};
}

} // namespace korvane
