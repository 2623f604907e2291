#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace ambrel {

/// The strings that stand for an enumeration in files. Specialised once for each such enumeration
/// with `table`, an array of (case, raw value) in declaration order.
template <class Enum> struct RawValues;

/// The string that is written to files for `value`.
template <class Enum> constexpr std::string_view rawValue(Enum value) {
    for (const auto& [candidate, raw] : RawValues<Enum>::table) {
        if (candidate == value) return raw;
    }
    return {};
}

/// The case whose raw value is exactly `raw` (case-sensitive, nothing trimmed), or absent.
template <class Enum> constexpr std::optional<Enum> fromRawValue(std::string_view raw) {
    for (const auto& [candidate, text] : RawValues<Enum>::table) {
        if (text == raw) return candidate;
    }
    return std::nullopt;
}

/// All raw values in declaration order, separated by commas, as messages tell them.
template <class Enum> std::string rawValueList() {
    std::string list;
    for (const auto& [ignored, raw] : RawValues<Enum>::table) {
        list.append(list.empty() ? "" : ", ").append(raw);
    }
    return list;
}

} // namespace ambrel
