#include "Ambrel/Instance/DesktopId.h"

#include <algorithm>
#include <cstdint>

namespace ambrel {

namespace {

constexpr std::size_t longestId = 200;

bool isLetter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' || c == '-';
}

bool isElement(std::string_view text) {
    const auto fits = [](char c) { return isLetter(c) || (c >= '0' && c <= '9'); };
    return !text.empty() && isLetter(text.front()) && std::all_of(text.begin(), text.end(), fits);
}

bool isDesktopName(std::string_view text) {
    if (text.size() > longestId || text.find('.') == std::string_view::npos) return false;
    while (true) {
        const auto dot = text.find('.');
        if (!isElement(text.substr(0, dot))) return false;
        if (dot == std::string_view::npos) return true;
        text.remove_prefix(dot + 1);
    }
}

/// FNV-1a, 64 bits: the same on every system and in every version.
std::uint64_t hashOf(std::string_view text) {
    std::uint64_t hash = 0xcbf29ce484222325;
    for (const char c : text) {
        hash ^= static_cast<unsigned char>(c);
        hash *= 0x100000001b3;
    }
    return hash;
}

std::string hexadecimal(std::uint64_t number) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text;
    for (int shift = 60; shift >= 0; shift -= 4) text += digits[number >> shift & 0xF];
    return text;
}

} // namespace

std::string desktopId(std::string_view bundleId) {
    if (isDesktopName(bundleId)) return std::string(bundleId);
    return "app.korvane.instance.x" + hexadecimal(hashOf(bundleId));
}

} // namespace ambrel
