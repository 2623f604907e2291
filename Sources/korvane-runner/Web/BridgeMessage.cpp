#include "korvane-runner/Web/BridgeMessage.h"

namespace korvane::runner {

namespace {

constexpr std::size_t longestType = 16;
constexpr std::size_t longestBannerTitle = 1000;
constexpr std::size_t longestBannerBody = 10'000;
constexpr std::size_t longestPageTitle = 100'000;

/// The text of a payload's field, empty where it has none. A payload that is no dictionary has no
/// fields, whatever the engine says of it: a text has a length, a list its elements.
std::string textIn(const PageValue& payload, const char* name, std::size_t most) {
    if (!payload.isDictionary()) return {};
    return payload.field(name)->text(most).value_or(std::string());
}

/// The integer that `number` is, and not one that it is near.
std::optional<std::int64_t> exactInteger(double number) {
    constexpr double beyond = 9223372036854775808.0;             // 2 to the power of 63
    const bool isInRange = number >= -beyond && number < beyond; // false for NaN
    if (!isInRange) return std::nullopt;
    // Not by std::trunc: a library for it would be loaded at every start of any instance.
    const auto integer = static_cast<std::int64_t>(number);
    return static_cast<double>(integer) == number ? std::optional(integer) : std::nullopt;
}

std::int64_t countIn(const PageValue& payload) {
    if (!payload.isDictionary()) return 0;
    const auto number = payload.field("count")->number();
    return number ? exactInteger(*number).value_or(0) : 0;
}

} // namespace

std::optional<BridgeMessage> readBridgeMessage(const PageValue& body) {
    if (!body.isDictionary()) return std::nullopt;
    const auto type = body.field("type")->text(longestType);
    if (!type) return std::nullopt;
    const auto payload = body.field("payload");
    if (*type == "notify") {
        return NotifyMessage{textIn(*payload, "title", longestBannerTitle),
                             textIn(*payload, "body", longestBannerBody)};
    }
    if (*type == "badge") return BadgeMessage{countIn(*payload)};
    if (*type == "title") return TitleMessage{textIn(*payload, "title", longestPageTitle)};
    return std::nullopt;
}

} // namespace korvane::runner
