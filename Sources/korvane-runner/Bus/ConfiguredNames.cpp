#include "korvane-runner/Bus/ConfiguredNames.h"

#include "Ambrel/Base/TextParts.h"

#include <algorithm>
#include <string_view>

namespace korvane::runner::bus {

namespace {

using ambrel::InstanceConfig;

std::string_view overrideOf(const InstanceConfig& config, const char* key) {
    const auto entry = config.infoPlistOverrides.find(key);
    return entry == config.infoPlistOverrides.end() ? std::string_view() : entry->second;
}

} // namespace

NamePolicy configuredPolicy(const InstanceConfig& config) {
    const bool hides = overrideOf(config, ambrel::hidesSecretsKey) == "true";
    NamePolicy policy(hides ? Secrets::hidden : Secrets::shared);
    auto rest = overrideOf(config, ambrel::busNamesKey);
    while (!rest.empty()) {
        const auto words = ambrel::takeUntil(rest, ';');
        const auto start = std::min(words.find_first_not_of(' '), words.size());
        // A rule of the program's own has a reason behind it.
        if (auto rule = NameRule::parse(std::string(words.substr(start)) + "  configured")) {
            policy.add(std::move(*rule));
        }
    }
    return policy;
}

} // namespace korvane::runner::bus
