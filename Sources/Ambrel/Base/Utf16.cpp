#include "Ambrel/Base/Utf16.h"

#include "Ambrel/Base/Utf8.h"

namespace ambrel::utf16 {

namespace {

constexpr std::string_view bigEndianMark = "\xFE\xFF";
constexpr std::string_view littleEndianMark = "\xFF\xFE";

bool isHighSurrogate(char32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
bool isLowSurrogate(char32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

/// Takes units of two bytes off the front of a text.
class Units {
public:
    Units(std::string_view bytes, bool isBigEndian) : rest_(bytes), isBigEndian_(isBigEndian) {}

    bool isAtEnd() const { return rest_.size() < 2; }

    char32_t take() {
        const char32_t first = static_cast<unsigned char>(rest_[0]);
        const char32_t second = static_cast<unsigned char>(rest_[1]);
        rest_.remove_prefix(2);
        return isBigEndian_ ? first << 8 | second : second << 8 | first;
    }

private:
    std::string_view rest_;
    bool isBigEndian_;
};

} // namespace

bool hasMark(std::string_view bytes) {
    return bytes.starts_with(bigEndianMark) || bytes.starts_with(littleEndianMark);
}

std::optional<std::string> toUtf8(std::string_view bytes) {
    if (!hasMark(bytes) || bytes.size() % 2 != 0) return std::nullopt;
    Units units(bytes.substr(bigEndianMark.size()), bytes.starts_with(bigEndianMark));
    std::string text;
    text.reserve(bytes.size() / 2);
    while (!units.isAtEnd()) {
        char32_t character = units.take();
        if (isLowSurrogate(character)) return std::nullopt;
        if (isHighSurrogate(character)) {
            const char32_t low = units.isAtEnd() ? 0 : units.take();
            if (!isLowSurrogate(low)) return std::nullopt;
            character = 0x10000 + ((character - 0xD800) << 10) + (low - 0xDC00);
        }
        utf8::append(text, character);
    }
    return text;
}

} // namespace ambrel::utf16
