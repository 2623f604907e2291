#include "Manager/Desktop/Linux/OfferedTypes.h"

#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Platform/LibraryError.h"
#include "Ambrel/Platform/PropertyList.h"
#include "Manager/Desktop/Registration.h"
#include "Manager/Rules/InfoPlistKeys.h"

#include <algorithm>
#include <array>

namespace korvane::registration {

namespace {

/// Those registered for media types, and those of the Shared MIME-info Specification. What else
/// programs write there ("all/allfiles") no file ever has, and checkers refuse it.
constexpr std::array<std::string_view, 14> knownMedia{
    "application",      "audio",  "chemical",  "font", "image", "inode",
    "message",          "model",  "multipart", "text", "video", "x-content",
    "x-scheme-handler", "x-world"};

/// What desktops look for in a program that they offer as a browser.
constexpr std::array<const char*, 4> browserTypes{
    "text/html", "application/xhtml+xml", "x-scheme-handler/http", "x-scheme-handler/https"};

/// RFC 6838, 4.2.
bool isSubtype(std::string_view text) {
    return !text.empty() && std::ranges::all_of(text, [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               std::string_view("!#$&-^_.+").find(c) != std::string_view::npos;
    });
}

bool isType(std::string_view text) {
    const auto slash = text.find('/');
    return slash != std::string_view::npos && isSubtype(text.substr(slash + 1)) &&
           std::ranges::find(knownMedia, text.substr(0, slash)) != knownMedia.end();
}

void add(std::vector<std::string>& types, std::string type) {
    if (std::ranges::find(types, type) == types.end()) types.push_back(std::move(type));
}

std::vector<std::string> typesOfTarget(const ambrel::Path& target) {
    try {
        const auto info = ambrel::readPropertyList(ambrel::BundleLayout{target}.infoPlist());
        if (!info) return {};
        const auto found = info->find(adoptedMimeTypesKey);
        const auto* text = found == info->end() ? nullptr : found->second.string();
        return text == nullptr ? std::vector<std::string>() : mimeTypesIn(*text);
    } catch (const ambrel::LibraryError&) {
        return {}; // the instance is in the menu without
    }
}

} // namespace

std::vector<std::string> mimeTypesIn(std::string_view list) {
    std::vector<std::string> types;
    while (!list.empty()) {
        const auto end = std::min(list.find(';'), list.size());
        if (isType(list.substr(0, end))) add(types, std::string(list.substr(0, end)));
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    return types;
}

std::vector<std::string> offeredTypes(const ambrel::InstanceConfig& config) {
    if (config.kind != ambrel::ShortcutKind::app) return {};
    std::vector<std::string> types;
    if (config.openWithPassthrough) types = typesOfTarget(config.targetAppPath);
    if (!config.registerAsBrowser) return types;
    for (const auto* type : browserTypes) add(types, type);
    return types;
}

} // namespace korvane::registration
