#include "Ambrel/Web/WebBadge.h"

#include "Ambrel/Base/Utf8.h"

#include <algorithm>
#include <array>
#include <charconv>

namespace ambrel {

namespace {

// The runner carries no Unicode data, so the digits that titles are matched with stand here.

/// The zeros of all runs of ten decimal digits (general category Nd, Unicode 15.0).
constexpr std::array<char32_t, 68> decimalZeros{
    0x00030, 0x00660, 0x006F0, 0x007C0, 0x00966, 0x009E6, 0x00A66, 0x00AE6, 0x00B66, 0x00BE6,
    0x00C66, 0x00CE6, 0x00D66, 0x00DE6, 0x00E50, 0x00ED0, 0x00F20, 0x01040, 0x01090, 0x017E0,
    0x01810, 0x01946, 0x019D0, 0x01A80, 0x01A90, 0x01B50, 0x01BB0, 0x01C40, 0x01C50, 0x0A620,
    0x0A8D0, 0x0A900, 0x0A9D0, 0x0A9F0, 0x0AA50, 0x0ABF0, 0x0FF10, 0x104A0, 0x10D30, 0x11066,
    0x110F0, 0x11136, 0x111D0, 0x112F0, 0x11450, 0x114D0, 0x11650, 0x116C0, 0x11730, 0x118E0,
    0x11950, 0x11C50, 0x11D50, 0x11DA0, 0x11F50, 0x16A60, 0x16AC0, 0x16B50, 0x1D7CE, 0x1D7D8,
    0x1D7E2, 0x1D7EC, 0x1D7F6, 0x1E140, 0x1E2F0, 0x1E4F0, 0x1E950, 0x1FBF0,
};

bool isDecimalDigit(char32_t c) {
    const auto above = std::ranges::upper_bound(decimalZeros, c);
    return above != decimalZeros.begin() && c - *std::prev(above) < 10;
}

/// Takes all leading characters of a class off `text` and returns them.
template <class Class> std::string_view takeWhile(std::string_view& text, const Class& isInClass) {
    const auto all = text;
    while (!text.empty()) {
        auto rest = text;
        const auto character = utf8::takeFirst(rest);
        if (!character || !isInClass(*character)) break;
        text = rest;
    }
    return all.substr(0, all.size() - text.size());
}

bool takeCharacter(std::string_view& text, char character) {
    if (!text.starts_with(character)) return false;
    text.remove_prefix(1);
    return true;
}

/// The digits between the brackets at the start of `text`, or empty. No step can match in more
/// than one way, so nothing has to be tried twice.
std::string_view digitsInBrackets(std::string_view text, char open, char close) {
    if (!takeCharacter(text, open)) return {};
    takeWhile(text, utf8::isWhiteSpace);
    const auto digits = takeWhile(text, isDecimalDigit);
    takeCharacter(text, '+');
    takeWhile(text, utf8::isWhiteSpace);
    return takeCharacter(text, close) ? digits : std::string_view{};
}

/// The digits of the first such brackets anywhere in `title`, or empty.
std::string_view firstDigits(std::string_view title, char open, char close) {
    for (auto at = title.find(open); at != std::string_view::npos; at = title.find(open, at + 1)) {
        const auto digits = digitsInBrackets(title.substr(at), open, close);
        if (!digits.empty()) return digits;
    }
    return {};
}

/// Absent when `digits` is empty, too long for the type, or not written in ASCII.
std::optional<std::int64_t> number(std::string_view digits) {
    std::int64_t value = 0;
    const auto* end = digits.data() + digits.size();
    const auto [stopped, error] = std::from_chars(digits.data(), end, value);
    const bool whole = error == std::errc() && stopped == end;
    return whole ? std::optional(value) : std::nullopt;
}

} // namespace

void WebBadgeState::setAPIBadge(std::int64_t count) { apiBadge = std::max<std::int64_t>(count, 0); }

void WebBadgeState::setTitle(std::string_view title) { titleBadge = unreadCount(title); }

std::int64_t WebBadgeState::unreadCount(std::string_view title) {
    if (const auto round = number(firstDigits(title, '(', ')'))) return *round;
    return number(firstDigits(title, '[', ']')).value_or(0);
}

std::optional<std::string> WebBadgeState::label() const {
    const auto count = apiBadge.value_or(titleBadge);
    return count >= 1 ? std::optional(std::to_string(count)) : std::nullopt;
}

} // namespace ambrel
