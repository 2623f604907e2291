#pragma once

#include <cstddef>
#include <string_view>

/// Signatures: one letter for each type, brackets around structs and entries of dictionaries
/// (D-Bus Specification, "Type System").
namespace korvane::runner::bus {

inline constexpr std::size_t longestSignature = 255; ///< in bytes

/// Whether `signature` is a list of complete types, possibly of none.
bool isSignature(std::string_view signature);

/// Whether `signature` is one complete type, as that of a variant has to be.
bool isSingleType(std::string_view signature);

/// The length of the complete type that the valid `signature` begins with, which is not empty.
std::size_t firstTypeLength(std::string_view signature);

/// 1, 2, 4 or 8: what the position of a value is a multiple of. `type` begins its type.
std::size_t alignmentOf(char type);

} // namespace korvane::runner::bus
