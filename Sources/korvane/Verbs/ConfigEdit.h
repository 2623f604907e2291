#pragma once

#include "Ambrel/Instance/InstanceConfig.h"
#include "Ambrel/Platform/ProcessEnvironment.h"

#include <string>
#include <string_view>
#include <vector>

namespace korvane::edit {

/// Applies "key=value" to `config`: JSON where the field is a Boolean, a list or a map, else plain
/// text; "environment.K=V" sets one entry. Throws UsageError for what is no key or no value of its
/// field, Refusal for a key that more than the configuration depends on, and hasNoEffect for one
/// that the kind does not heed.
void set(ambrel::InstanceConfig& config, const std::string& assignment,
         const ambrel::UserPlaces& user);

/// Gives the field `key` the default of the file, or takes one entry out of the environment. The
/// arguments and variables of an application become those that are worked out for it. Throws as
/// set() does, what requireStart() throws, and Refusal for a field that has to be there.
void unset(ambrel::InstanceConfig& config, const std::string& key, const ambrel::UserPlaces& user,
           const ambrel::Environment& environment);

/// The keys that set() takes, without those of single variables.
std::vector<std::string> keys();

/// The option of "edit" that changes the field `key`; empty where none does.
std::string optionFor(std::string_view key);

/// How the field `key` is changed by creating the instance again, as the end of a sentence about
/// "create". Empty for one that set() or an option takes.
std::string howToCreateAgain(std::string_view key);

/// The key that "key=value" names.
std::string keyOf(const std::string& assignment);

} // namespace korvane::edit
