#pragma once

#include "korvane-runner/Bus/InstanceNames.h"

namespace korvane::runner::bus {

/// A rule of which messages a program wants to hear, as its text has it (D-Bus Specification,
/// "Match Rules").
struct MatchRule {
    struct Part {
        std::string key;
        std::string value;       ///< without quotes
        std::size_t valueBegin;  ///< where it stands in the text, with quotes
        std::size_t valueLength; ///< likewise
    };
    std::vector<Part> parts; ///< in their order, unknown keys too

    /// As dbus-daemon reads it, which takes blanks, quotes and backslashes where the D-Bus
    /// Specification ("Match Rules") says little; whether the keys and values mean something is
    /// left to the bus. Absent for a text that is none.
    static std::optional<MatchRule> parse(std::string_view text);

    /// Empty where there is no such key.
    std::string_view valueOf(std::string_view key) const;
};

/// The longest text that is taken apart, in bytes. No bus takes rules of more than 1,024.
inline constexpr std::size_t longestRule = 16 * 1024;

/// What a rule becomes on the user's bus.
struct TranslatedRule {
    std::string rule;
    /// To be added and removed beside it: names below a name space are shared or private, and no
    /// rule is about both.
    std::optional<std::string> second{};
    bool operator==(const TranslatedRule&) const = default;
};

/// The rule, which is not longer than `longestRule`, with the names on the bus in it, always the
/// same for the same text, so that it can be removed again; all else stays byte by byte. A text
/// that is no rule is left as it is, and so is what may be no name: the first argument is one in
/// what the bus itself says, and anything elsewhere. A rule may get longer than the bus accepts,
/// which then says so.
TranslatedRule translatedRule(std::string_view text, InstanceNames& names);

} // namespace korvane::runner::bus
