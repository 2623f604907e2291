#pragma once

#include <cstddef>
#include <string_view>

/// Names by which programs find each other on a message bus, as the D-Bus Specification has them
/// under "Valid Names".
namespace ambrel {

/// In bytes. All names in a message are at most this long.
inline constexpr std::size_t longestBusName = 255;

/// Whether a program can ask for `name`: "org.example.Mail". Two elements at least, of ASCII's
/// letters, digits, "_" and "-", none of which begins with a digit. The name that the bus gives to
/// each connection, ":1.5", is none.
bool isWellKnownBusName(std::string_view name);

/// Whether `name` is such a name or one element of it, of which such names can begin.
bool isBusNameSpace(std::string_view name);

} // namespace ambrel
