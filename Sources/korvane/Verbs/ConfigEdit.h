#pragma once

#include "Ambrel/Instance/InstanceConfig.h"

#include <string>
#include <string_view>
#include <vector>

namespace korvane::edit {

/// Applies "key=value" to `config`: JSON where the field is a Boolean, a list or a map, else plain
/// text; "environment.K=V" sets one entry. Throws UsageError for what is no key or no value of its
/// field, Refusal for a key that more than the configuration depends on.
void set(ambrel::InstanceConfig& config, const std::string& assignment,
         const ambrel::UserPlaces& user);

/// Gives the field `key` the default of the file, or takes one entry out of the environment. Throws
/// as set() does, and Refusal for a field that has to be there.
void unset(ambrel::InstanceConfig& config, const std::string& key);

/// The keys that set() takes, without those of single variables.
std::vector<std::string> keys();

/// How the field `key` is changed by creating the instance again, as the end of a sentence about
/// "create". Empty for one that set() takes.
std::string howToCreateAgain(std::string_view key);

/// The key that "key=value" names.
std::string keyOf(const std::string& assignment);

} // namespace korvane::edit
