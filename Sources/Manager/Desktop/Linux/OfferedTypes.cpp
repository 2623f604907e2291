#include "Manager/Desktop/Registration.h"

#include "Manager/Rules/OpenedTypes.h"

#include <algorithm>
#include <array>

namespace korvane::registration {

namespace {

/// What desktops look for in a program that they offer as a browser.
constexpr std::array<const char*, 4> browserTypes{
    "text/html", "application/xhtml+xml", "x-scheme-handler/http", "x-scheme-handler/https"};

void add(std::vector<std::string>& types, std::string type) {
    if (std::ranges::find(types, type) == types.end()) types.push_back(std::move(type));
}

std::vector<std::string> tryFindOpened(const ambrel::Path& app) noexcept {
    try {
        return openedTypes(app);
    } catch (const std::exception&) {
        return {}; // the instance is in the menu without
    }
}

} // namespace

std::vector<std::string> offeredTypes(const ambrel::InstanceConfig& config) {
    if (config.kind != ambrel::ShortcutKind::app) return {};
    std::vector<std::string> types;
    if (config.openWithPassthrough) types = tryFindOpened(config.targetAppPath);
    if (!config.registerAsBrowser) return types;
    for (const auto* type : browserTypes) add(types, type);
    return types;
}

} // namespace korvane::registration
