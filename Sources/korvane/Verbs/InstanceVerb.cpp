#include "korvane/Verbs/InstanceVerb.h"

#include "Manager/Rules/InstanceLookup.h"
#include "korvane/CommandLine/Options.h"
#include "korvane/Output/Attempts.h"

#include <algorithm>
#include <memory>

namespace korvane {

using ambrel::InstanceRecord;

namespace {

/// The same bundle by two paths; a link to one is another thing, which goes alone.
bool isSamePlace(const ambrel::Path& left, const ambrel::Path& right) {
    const auto place = [](const ambrel::Path& path) {
        return ambrel::Path(ambrel::paths::withoutTrailingSlashes(path));
    };
    return place(left) == place(right);
}

} // namespace

Verb instanceVerb(std::string name, std::string summary, std::string example,
                  const std::function<int(const std::string&, const Surroundings&)>& action) {
    return {std::move(name),
            std::move(summary),
            {std::move(example)},
            [action](CLI::App& app, const Surroundings& surroundings) -> Action {
                const auto instance = std::make_shared<std::string>();
                options::instanceName(app, *instance);
                return [=, &surroundings](const auto&) { return action(*instance, surroundings); };
            }};
}

Verb instanceVerbWithJson(
    std::string name, std::string summary, std::string example,
    const std::function<int(const std::string&, bool asJson, const Surroundings&)>& action) {
    struct Given {
        std::string instance;
        bool asJson = false;
    };
    const auto withJson = example + " --json";
    return {std::move(name),
            std::move(summary),
            {std::move(example), withJson},
            [action](CLI::App& app, const Surroundings& surroundings) -> Action {
                const auto given = std::make_shared<Given>();
                options::instanceName(app, given->instance);
                options::asJson(app, given->asJson);
                return [=, &surroundings](const auto&) {
                    return action(given->instance, given->asJson, surroundings);
                };
            }};
}

std::vector<InstanceRecord> requireInstances(const std::vector<std::string>& names,
                                             const Surroundings& surroundings) {
    std::vector<InstanceRecord> records;
    for (const auto& name : names) {
        auto record = requireInstance(name, surroundings.user);
        const bool isKnown = std::ranges::any_of(records, [&](const InstanceRecord& other) {
            return other == record || isSamePlace(other.bundleURL, record.bundleURL);
        });
        if (!isKnown) records.push_back(std::move(record));
    }
    return records;
}

int forEach(const std::vector<InstanceRecord>& records, const Surroundings& surroundings,
            const std::function<void(const InstanceRecord&)>& action) {
    return attemptEach(records.size(), surroundings,
                       [&](std::size_t number) { action(records[number]); });
}

} // namespace korvane
