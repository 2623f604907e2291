#include "korvane-runner/Bus/ShownEntry.h"

#include "Ambrel/Base/TextParts.h"

#include <algorithm>
#include <optional>

namespace korvane::runner::bus {

namespace {

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r";
    const auto start = std::min(text.find_first_not_of(blanks), text.size());
    return text.substr(start, text.find_last_not_of(blanks) + 1 - start);
}

/// The value of "KEY = VALUE"; absent for another line.
std::optional<std::string_view> assigned(std::string_view line, std::string_view key) {
    const auto sign = line.find('=');
    if (sign == std::string_view::npos || trimmed(line.substr(0, sign)) != key) {
        return std::nullopt;
    }
    return trimmed(line.substr(sign + 1));
}

} // namespace

bool isShownApplication(std::string_view text) {
    bool isInEntry = false;
    bool isApplication = false;
    while (!text.empty()) {
        const auto line = trimmed(ambrel::takeUntil(text, '\n'));
        if (line.starts_with('[')) isInEntry = line == "[Desktop Entry]";
        if (!isInEntry) continue;
        if (const auto type = assigned(line, "Type")) isApplication = *type == "Application";
        if (assigned(line, "NoDisplay") == "true" || assigned(line, "Hidden") == "true")
            return false;
    }
    return isApplication;
}

} // namespace korvane::runner::bus
