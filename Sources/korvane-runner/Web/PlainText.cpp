#include "korvane-runner/Web/PlainText.h"

#include "Ambrel/Base/Utf8.h"

namespace korvane::runner::plainText {

namespace {

constexpr char32_t replacement = 0xFFFD;

bool isLineBreak(char32_t character) {
    return character == '\n' || character == '\r' || character == 0x85 || character == 0x2028 ||
           character == 0x2029;
}

char32_t takeFirst(std::string_view& text) {
    return ambrel::utf8::takeFirst(text).value_or(replacement);
}

/// With `lineBreak` for every line break, the pair of two that ends a line elsewhere included.
std::string plain(std::string_view text, char lineBreak) {
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const auto character = takeFirst(text);
        if (isLineBreak(character)) {
            if (character == '\r' && text.starts_with('\n')) text.remove_prefix(1);
            result.push_back(lineBreak);
        } else if (ambrel::utf8::isControl(character)) {
            result.push_back(' ');
        } else {
            ambrel::utf8::append(result, character);
        }
    }
    return result;
}

} // namespace

std::string oneLine(std::string_view text) { return plain(text, ' '); }

std::string lines(std::string_view text) { return plain(text, '\n'); }

std::string_view cut(std::string_view text, std::size_t most) {
    if (text.size() <= most) return text;
    const auto isInside = [&](std::size_t at) {
        return (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80;
    };
    while (most > 0 && isInside(most)) --most;
    return text.substr(0, most);
}

std::string html(std::string_view text) {
    std::string result;
    for (const char character : text) {
        switch (character) {
        case '&':
            result += "&amp;";
            break;
        case '<':
            result += "&lt;";
            break;
        case '>':
            result += "&gt;";
            break;
        case '"':
            result += "&quot;";
            break;
        case '\'':
            result += "&#39;";
            break;
        default:
            result.push_back(character);
        }
    }
    return result;
}

} // namespace korvane::runner::plainText
