#pragma once

#include <optional>
#include <string>

namespace korvane {

/// The identifier by which the engine of a well-known browser is told, for a desktop id or the
/// name of a program; absent for others.
std::optional<std::string> wellKnownIdentifier(const std::string& name);

} // namespace korvane
