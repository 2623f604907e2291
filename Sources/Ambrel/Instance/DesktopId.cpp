#include "Ambrel/Instance/DesktopId.h"

#include "Ambrel/Base/StableHash.h"

#include <algorithm>

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

} // namespace

std::string desktopId(std::string_view bundleId) {
    if (isDesktopName(bundleId)) return std::string(bundleId);
    return "app.korvane.instance.x" + stableHash(bundleId);
}

} // namespace ambrel
