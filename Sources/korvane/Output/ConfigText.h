#pragma once

#include "Ambrel/Instance/ConfigFields.h"

#include <string>
#include <vector>

/// What a configuration holds, in words for a person.
namespace korvane::configText {

/// What the instance is about, in one word or path.
std::string subject(const ambrel::InstanceConfig& config);

struct Row {
    std::string key;
    std::string text;
};

/// The fields of one part with what they hold, one row for each element of a list or map; none for
/// what is absent and for a choice that means nothing for the kind of the instance.
std::vector<Row> rows(const ambrel::InstanceConfig& config, ambrel::ConfigPart part);

} // namespace korvane::configText
