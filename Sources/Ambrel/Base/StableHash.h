#pragma once

#include <string>
#include <string_view>

namespace ambrel {

/// A hash of `text` in 16 hexadecimal digits, the same on every system and in every version: names
/// that are kept somewhere are made of it.
std::string stableHash(std::string_view text);

} // namespace ambrel
