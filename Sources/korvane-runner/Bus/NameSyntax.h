#pragma once

#include "Ambrel/Base/BusName.h"

#include <cstddef>
#include <string_view>

/// What the names of a message look like (D-Bus Specification, "Valid Names" and "Valid Object
/// Paths"). Each is at most 255 bytes of ASCII, except for paths.
namespace korvane::runner::bus {

inline constexpr std::size_t longestName = ambrel::longestBusName;

/// The bus itself.
inline constexpr std::string_view busName = "org.freedesktop.DBus";

/// A unique name, ":1.5", or a well-known one, "org.example.Editor".
bool isBusName(std::string_view name);
/// Whether a bus name is a unique one.
constexpr bool isUniqueName(std::string_view name) { return name.starts_with(':'); }
/// A well-known name, or one element of which such names begin, as arg0namespace has it.
bool isNameSpace(std::string_view name);

bool isInterfaceName(std::string_view name);
bool isErrorName(std::string_view name);
bool isMemberName(std::string_view name);
/// An absolute path of elements [A-Za-z0-9_]+, of any length.
bool isObjectPath(std::string_view path);

} // namespace korvane::runner::bus
