#include "korvane-runner/Bus/ConfiguredNames.h"

#include "Ambrel/Base/TextParts.h"

#include <algorithm>
#include <string_view>

namespace korvane::runner::bus {

namespace {

using ambrel::InstanceConfig;

std::string_view override(const InstanceConfig& config, const char* key) {
    const auto entry = config.infoPlistOverrides.find(key);
    return entry == config.infoPlistOverrides.end() ? std::string_view() : entry->second;
}

} // namespace

bool wantsOwnNames(const InstanceConfig& config) {
    return config.kind == ambrel::ShortcutKind::app &&
           override(config, ambrel::sharedBusKey) != "true" &&
           !config.environment.contains("DBUS_SESSION_BUS_ADDRESS");
}

NamePolicy configuredPolicy(const InstanceConfig& config) {
    const bool hides = override(config, ambrel::hidesSecretsKey) == "true";
    NamePolicy policy(hides ? Secrets::hidden : Secrets::shared);
    auto rest = override(config, ambrel::busNamesKey);
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
