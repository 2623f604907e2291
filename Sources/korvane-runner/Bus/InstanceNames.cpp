#include "korvane-runner/Bus/InstanceNames.h"

#include "korvane-runner/Bus/NameSyntax.h"

#include <algorithm>

namespace korvane::runner::bus {

namespace {

bool isInName(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
           c == '-' || c == '.' || c == ':';
}

} // namespace

std::string InstanceNames::toBus(std::string_view name, NameUse use) {
    return policy_.isShared(name, use) ? std::string(name) : names_.toBus(name);
}

std::optional<std::string> InstanceNames::fromBus(std::string_view name, NameUse use) const {
    if (auto own = names_.fromBus(name)) {
        // Whoever calls a name that is shared reaches the user's, so that this one is not it.
        if (!isUniqueName(*own) && policy_.isShared(*own, use)) return std::nullopt;
        return own;
    }
    if (!policy_.isShared(name, use)) return std::nullopt;
    return std::string(name);
}

std::string InstanceNames::wordFromBus(std::string_view word) const {
    const auto size = word.find_last_not_of(".:") + 1;
    const auto own = names_.fromBus(word.substr(0, size));
    if (!own) return std::string(word);
    return *own + std::string(word.substr(size));
}

std::string InstanceNames::textFromBus(std::string_view text) const {
    std::string result;
    while (!text.empty()) {
        const auto begin = std::ranges::find_if(text, isInName);
        result.append(text.begin(), begin);
        text.remove_prefix(static_cast<std::size_t>(begin - text.begin()));
        const auto end = std::ranges::find_if_not(text, isInName);
        const auto size = static_cast<std::size_t>(end - text.begin());
        result += wordFromBus(text.substr(0, size));
        text.remove_prefix(size);
    }
    return result;
}

} // namespace korvane::runner::bus
