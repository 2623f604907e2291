#include "korvane/Verbs/InstanceVerb.h"

#include "korvane/CommandLine/Options.h"

#include <memory>

namespace korvane {

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

} // namespace korvane
