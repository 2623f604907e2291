#pragma once

#include <optional>
#include <string>
#include <string_view>

/// UTF-8 in plain C++ (RFC 3629: no surrogates, no overlong forms, nothing above U+10FFFF).
namespace ambrel::utf8 {

bool isValid(std::string_view text);

/// `text` with every ill-formed sequence replaced by U+FFFD.
std::string replacingInvalid(std::string_view text);

void append(std::string& text, char32_t character);

/// Takes the next character off the front of `text`, which must not be empty. Absent, with one
/// byte taken off, where the text is ill-formed.
std::optional<char32_t> takeFirst(std::string_view& text);

/// Whether `character` is a control character: of ASCII, DEL, or one of the 32 from U+0080 on.
constexpr bool isControl(char32_t character) {
    return character < 0x20 || (character >= 0x7F && character < 0xA0);
}

/// Whether `character` has the property White_Space, as blanks and line breaks do.
constexpr bool isWhiteSpace(char32_t character) {
    return (character >= 0x09 && character <= 0x0D) || character == 0x20 || character == 0x85 ||
           character == 0xA0 || character == 0x1680 ||
           (character >= 0x2000 && character <= 0x200A) || character == 0x2028 ||
           character == 0x2029 || character == 0x202F || character == 0x205F || character == 0x3000;
}

/// Whether `character` turns the order of others around (Bidi_Control), so that a reader sees
/// another text than there is.
constexpr bool isBidirectionalFormat(char32_t character) {
    return character == 0x061C || character == 0x200E || character == 0x200F ||
           (character >= 0x202A && character <= 0x202E) ||
           (character >= 0x2066 && character <= 0x2069);
}

/// `text` for a message of one line: ill-formed sequences replaced, control and line-breaking
/// characters escaped as \n, \t or \u{HEX}, and bidirectional formatting characters too, so that a
/// name cannot fake a line.
std::string oneLine(std::string_view text);

} // namespace ambrel::utf8
