#pragma once

#include <optional>
#include <string>
#include <string_view>

/// UTF-16 with a byte order mark (RFC 2781), for text that comes from elsewhere.
namespace ambrel::utf16 {

/// Whether `bytes` begin with a byte order mark of either order.
bool hasMark(std::string_view bytes);

/// The text behind the mark in UTF-8. Absent without a mark, for half a unit at the end and for a
/// surrogate without its other half.
std::optional<std::string> toUtf8(std::string_view bytes);

} // namespace ambrel::utf16
