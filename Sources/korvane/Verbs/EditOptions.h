#pragma once

#include "Ambrel/Instance/InstanceRegistry.h"
#include "korvane/Output/Surroundings.h"

#include <optional>
#include <string>
#include <vector>

namespace korvane {

/// What the words and options of "edit" said, as they were typed.
struct EditOptions {
    std::string name;
    std::vector<std::string> set;
    std::vector<std::string> unset;
    std::vector<std::string> addArgs;
    std::vector<std::string> removeArgs;
    std::vector<std::string> environment;
    std::optional<std::string> label;
    std::optional<std::string> labelColor;
    std::optional<std::string> labelPosition;
    std::optional<std::string> icon;
    std::optional<std::string> newName;
    bool asJson = false;
};

/// Throws UsageError where nothing is to be changed, or one thing in two ways, and Refusal badText.
void requireNoContradiction(const EditOptions& options);

/// The configuration that the words mean for `record`: what is unset goes first. Throws UsageError
/// for a value that is none of its option's, and Refusal for what cannot be changed so.
ambrel::InstanceConfig wantedBy(const EditOptions& options, const ambrel::InstanceRecord& record,
                                const Surroundings& surroundings);

} // namespace korvane
