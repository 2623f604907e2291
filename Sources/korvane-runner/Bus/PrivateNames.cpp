#include "korvane-runner/Bus/PrivateNames.h"

#include "Ambrel/Base/StableHash.h"
#include "korvane-runner/Bus/NameSyntax.h"

#include <algorithm>

namespace korvane::runner::bus {

namespace {

constexpr std::string_view playerBeginning = "org.mpris.MediaPlayer2.";
constexpr std::size_t longestReadablePart = 32;

/// More than any program has. Names beyond are translated, but not back.
constexpr std::size_t mostShortened = 1024;

bool isWordCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

bool isPlayer(std::string_view name) {
    return name.size() > playerBeginning.size() && name.starts_with(playerBeginning);
}

std::string joined(std::string_view first, std::string_view second) {
    return std::string(first).append(second);
}

} // namespace

std::string privatePrefix(std::string_view identifier) {
    std::string readable(identifier.substr(0, longestReadablePart));
    std::ranges::replace_if(
        readable, [](char c) { return !isWordCharacter(c); }, '_');
    return "korvane_" + readable + "_" + ambrel::stableHash(identifier);
}

PrivateNames::PrivateNames(const std::string& prefix)
    : prefix_(prefix + "."), suffix_("." + prefix) {}

std::string PrivateNames::toBus(std::string_view name) {
    if (isUniqueName(name)) return std::string(name);
    auto result = isPlayer(name) ? joined(name, suffix_) : joined(prefix_, name);
    return result.size() <= longestName ? result : shortened(name);
}

// One element behind the prefix is no name of a program's choice, which has two at least.
std::string PrivateNames::shortened(std::string_view name) {
    const auto element = "h" + ambrel::stableHash(name);
    auto result =
        isPlayer(name) ? joined(playerBeginning, element) + suffix_ : joined(prefix_, element);
    if (shortened_.size() < mostShortened) shortened_.try_emplace(result, name);
    return result;
}

std::optional<std::string> PrivateNames::nameSpaceToBus(std::string_view nameSpace) const {
    auto result = joined(prefix_, nameSpace);
    if (result.size() > longestName) return std::nullopt;
    return result;
}

std::optional<std::string> PrivateNames::fromBus(std::string_view name) const {
    if (isUniqueName(name)) return std::string(name);
    if (const auto known = shortened_.find(name); known != shortened_.end()) return known->second;
    if (name.starts_with(prefix_)) {
        name.remove_prefix(prefix_.size());
        // What toBus() never makes is a stranger's, who would have two names taken for one.
        if (isPlayer(name) || !isBusName(name)) return std::nullopt;
        return std::string(name);
    }
    if (!name.ends_with(suffix_)) return std::nullopt;
    name.remove_suffix(suffix_.size());
    return isPlayer(name) ? std::optional<std::string>(name) : std::nullopt;
}

} // namespace korvane::runner::bus
