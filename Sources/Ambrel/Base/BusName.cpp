#include "Ambrel/Base/BusName.h"

#include "Ambrel/Base/TextParts.h"

#include <algorithm>

namespace ambrel {

namespace {

bool isDigit(char c) { return c >= '0' && c <= '9'; }

bool isElement(std::string_view text) {
    return !text.empty() && !isDigit(text.front()) && std::ranges::all_of(text, [](char c) {
        return isDigit(c) || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' ||
               c == '-';
    });
}

} // namespace

bool isBusNameSpace(std::string_view name) {
    // With a dot behind it there would be another element, an empty one.
    if (name.size() > longestBusName || name.empty() || name.ends_with('.')) return false;
    while (!name.empty()) {
        if (!isElement(takeUntil(name, '.'))) return false;
    }
    return true;
}

bool isWellKnownBusName(std::string_view name) {
    return name.find('.') != std::string_view::npos && isBusNameSpace(name);
}

} // namespace ambrel
