#pragma once

#include <string_view>

namespace ambrel {

/// Containers inside one another beyond this number are refused.
inline constexpr std::size_t deepestPropertyList = 512;

/// Whether the bytes of a property list, XML or binary, can be handed to a parser that recurses:
/// nested no deeper than the limit, and, for the binary form, without cycles and without sharing
/// that would blow a small file up to more than about 64 MB; and without NUL characters in
/// texts, which end the parser's program.
bool isHarmlessPropertyList(std::string_view bytes);

/// Whether the bytes are meant as a binary property list.
bool isBinaryPropertyList(std::string_view bytes);

} // namespace ambrel
