#include "Ambrel/Base/Utf8.h"

#include <array>
#include <cstdint>
#include <cstring>

namespace ambrel::utf8 {

namespace {

constexpr char32_t replacement = 0xFFFD;

unsigned char byteAt(std::string_view text, std::size_t index) {
    return static_cast<unsigned char>(text[index]);
}

/// The length of the sequence that `lead` begins, 0 when it begins none.
std::size_t sequenceLength(unsigned char lead) {
    if (lead < 0x80) return 1;
    if (lead < 0xC2) return 0; // continuation bytes, and overlong forms of ASCII
    if (lead < 0xE0) return 2;
    if (lead < 0xF0) return 3;
    return lead < 0xF5 ? 4 : 0;
}

bool isWellFormed(char32_t character, std::size_t length) {
    constexpr std::array<char32_t, 5> smallest{0, 0, 0x80, 0x800, 0x10000};
    const bool surrogate = character >= 0xD800 && character <= 0xDFFF;
    return character >= smallest[length] && character <= 0x10FFFF && !surrogate;
}

bool isControlOrLineBreak(char32_t c) { return isControl(c) || c == 0x2028 || c == 0x2029; }

std::string escaped(char32_t c) {
    if (c == '\n') return "\\n";
    if (c == '\t') return "\\t";
    if (c == '\r') return "\\r";
    static constexpr std::string_view digits = "0123456789ABCDEF";
    std::string hex;
    for (char32_t rest = c; rest != 0 || hex.empty(); rest >>= 4) {
        hex.insert(hex.begin(), digits[rest & 0xF]);
    }
    return "\\u{" + hex + "}";
}

/// Takes what is ASCII off the front, eight bytes at once as long as they are nothing else: most
/// text is.
void skipAscii(std::string_view& text) {
    constexpr std::uint64_t highBits = 0x8080808080808080;
    std::uint64_t block = 0;
    while (text.size() >= sizeof block) {
        std::memcpy(&block, text.data(), sizeof block);
        if ((block & highBits) != 0) break;
        text.remove_prefix(sizeof block);
    }
    while (!text.empty() && byteAt(text, 0) < 0x80) text.remove_prefix(1);
}

} // namespace

std::optional<char32_t> takeFirst(std::string_view& text) {
    const auto lead = byteAt(text, 0);
    const auto length = sequenceLength(lead);
    char32_t character = length <= 1 ? lead : lead & (0xFFU >> (length + 1));
    bool complete = length != 0 && length <= text.size();
    for (std::size_t i = 1; complete && i < length; ++i) {
        const auto next = byteAt(text, i);
        complete = (next & 0xC0) == 0x80;
        character = (character << 6) | (next & 0x3FU);
    }
    const bool good = complete && isWellFormed(character, length);
    text.remove_prefix(good ? length : 1);
    return good ? std::optional(character) : std::nullopt;
}

bool isValid(std::string_view text) {
    for (skipAscii(text); !text.empty(); skipAscii(text)) {
        if (!takeFirst(text)) return false;
    }
    return true;
}

void append(std::string& text, char32_t c) {
    const auto put = [&text](char32_t byte) { text.push_back(static_cast<char>(byte)); };
    if (c < 0x80) {
        put(c);
    } else if (c < 0x800) {
        put(0xC0 | (c >> 6));
        put(0x80 | (c & 0x3F));
    } else if (c < 0x10000) {
        put(0xE0 | (c >> 12));
        put(0x80 | ((c >> 6) & 0x3F));
        put(0x80 | (c & 0x3F));
    } else {
        put(0xF0 | (c >> 18));
        put(0x80 | ((c >> 12) & 0x3F));
        put(0x80 | ((c >> 6) & 0x3F));
        put(0x80 | (c & 0x3F));
    }
}

std::string replacingInvalid(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) append(result, takeFirst(text).value_or(replacement));
    return result;
}

std::string oneLine(std::string_view text) {
    std::string line;
    line.reserve(text.size());
    while (!text.empty()) {
        const auto character = takeFirst(text).value_or(replacement);
        if (isControlOrLineBreak(character) || isBidirectionalFormat(character)) {
            line += escaped(character);
        } else {
            append(line, character);
        }
    }
    return line;
}

} // namespace ambrel::utf8
