#pragma once

#include "Ambrel/Instance/InstanceConfig.h"

#include <string>
#include <string_view>

namespace korvane {

/// Whether an instance of this kind heeds the field `key` of its configuration, as ConfigFields
/// tells. One that is no field is heeded by every kind.
bool isHeeded(std::string_view key, ambrel::ShortcutKind kind);

/// Throws Refusal hasNoEffect, about `name`, where `kind` does not heed the field `key`; the
/// sentence begins with `name`, and says which kinds do.
void requireHeeded(const std::string& name, std::string_view key, ambrel::ShortcutKind kind);

} // namespace korvane
