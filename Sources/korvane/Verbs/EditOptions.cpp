#include "korvane/Verbs/EditOptions.h"

#include "Manager/Base/Quoting.h"
#include "Manager/Base/Refusal.h"
#include "Manager/Rules/FieldEffect.h"
#include "Manager/Rules/UserText.h"
#include "korvane/CommandLine/UsageError.h"
#include "korvane/Verbs/ConfigEdit.h"
#include "korvane/Verbs/OptionValues.h"

#include <algorithm>

namespace korvane {

using ambrel::IconLabel;
using ambrel::InstanceConfig;

namespace {

bool saysNothing(const EditOptions& options) {
    const bool hasLists = !options.set.empty() || !options.unset.empty() ||
                          !options.addArgs.empty() || !options.removeArgs.empty() ||
                          !options.environment.empty();
    return !hasLists && !options.label && !options.labelColor && !options.labelPosition &&
           !options.icon && !options.newName;
}

void requireAllUtf8(const EditOptions& options) {
    requireUtf8Each(options.set, "--set");
    requireUtf8Each(options.unset, "--unset");
    requireUtf8Each(options.addArgs, "--add-arg");
    requireUtf8Each(options.removeArgs, "--remove-arg");
    requireUtf8Each(options.environment, "--env");
    requireUtf8(options.label.value_or(""), "--label");
    requireUtf8(options.icon.value_or(""), "--icon");
}

void requireOneWay(bool given, const std::string& option, const std::string& key,
                   const EditOptions& options) {
    if (!given) return;
    for (const auto& assignment : options.set) {
        if (edit::keyOf(assignment) != key) continue;
        throw UsageError(inQuotes(key) + " is changed by both --set and " + option + ".");
    }
}

/// The list that holds the arguments of what the instance starts.
std::vector<std::string>& argumentsOf(InstanceConfig& config, const std::string& option) {
    if (config.kind == ambrel::ShortcutKind::command) return config.commandArgs;
    requireHeeded(option, "extraArgs", config.kind);
    return config.extraArgs;
}

void changeArguments(const EditOptions& options, InstanceConfig& config) {
    for (const auto& argument : options.removeArgs) {
        auto& arguments = argumentsOf(config, "--remove-arg");
        const auto found = std::ranges::find(arguments, argument);
        if (found == arguments.end()) {
            throw Refusal("The instance is not started with the argument " + inQuotes(argument) +
                          ".");
        }
        arguments.erase(found);
    }
    for (const auto& argument : options.addArgs) {
        argumentsOf(config, "--add-arg").push_back(argument);
    }
}

void changeLabel(const EditOptions& options, InstanceConfig& config) {
    if (!options.label && !options.labelColor && !options.labelPosition) return;
    auto label = config.iconLabel;
    if (!label) label = IconLabel{"", "FFFFFF", IconLabel::Position::bottom};
    if (options.label) label->text = *options.label;
    if (!options.label && !label->isVisible()) {
        throw UsageError("--label-color and --label-position want a label: give one with --label.");
    }
    config.iconLabel = labelWith(*label, options.labelColor, options.labelPosition);
}

} // namespace

void requireNoContradiction(const EditOptions& options) {
    if (saysNothing(options)) {
        throw UsageError("Nothing to change: give --set KEY=VALUE, --unset KEY or another option. "
                         "See: korvane edit --help");
    }
    requireAllUtf8(options);
    for (const auto& assignment : options.set) {
        const auto key = edit::keyOf(assignment);
        if (std::ranges::find(options.unset, key) != options.unset.end()) {
            throw UsageError(inQuotes(key) + " is both set and unset.");
        }
    }
    requireOneWay(options.label.has_value(), "--label", "iconLabel", options);
}

InstanceConfig wantedBy(const EditOptions& options, const ambrel::InstanceRecord& record,
                        const Surroundings& surroundings) {
    const auto& user = surroundings.user;
    auto config = record.config;
    for (const auto& key : options.unset) edit::unset(config, key, user, surroundings.environment);
    for (const auto& assignment : options.set) edit::set(config, assignment, user);
    changeArguments(options, config);
    for (const auto& [key, value] : mapFrom(options.environment, "--env")) {
        requireHeeded("--env", "environment", config.kind);
        config.environment.insert_or_assign(key, value);
    }
    changeLabel(options, config);
    if (options.newName) config.displayName = checkedName(*options.newName);
    return config;
}

} // namespace korvane
