#pragma once

#include "Ambrel/Instance/InstanceConfig.h"

#include <optional>
#include <string>
#include <vector>

/// What the values of options mean that several verbs have.
namespace korvane {

/// The map that texts "K=V" make, each split at its first "=". Throws UsageError, naming `option`,
/// for one without a key or "=".
ambrel::StringMap mapFrom(const std::vector<std::string>& texts, const std::string& option);

/// `label` with the values of --label-color and --label-position, where they are given. Throws
/// UsageError for a position that is none, and Refusal badColor.
ambrel::IconLabel labelWith(ambrel::IconLabel label, const std::optional<std::string>& color,
                            const std::optional<std::string>& position);

} // namespace korvane
