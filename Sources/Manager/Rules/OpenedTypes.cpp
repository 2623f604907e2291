#include "Manager/Rules/OpenedTypes.h"

#include "Ambrel/Application/AppEngine.h"
#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Platform/PropertyList.h"
#include "Manager/Rules/InfoPlistKeys.h"

#include <algorithm>
#include <array>

namespace korvane {

namespace {

/// Those registered for media types, and those of the Shared MIME-info Specification. What else
/// programs write there ("all/allfiles") no file ever has, and checkers refuse it.
constexpr std::array<std::string_view, 14> knownMedia{
    "application",      "audio",  "chemical",  "font", "image", "inode",
    "message",          "model",  "multipart", "text", "video", "x-content",
    "x-scheme-handler", "x-world"};

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

bool isOfWeb(const std::string& type) {
    return type == "text/html" || type == "x-scheme-handler/http" ||
           type == "x-scheme-handler/https";
}

} // namespace

std::vector<std::string> mimeTypesIn(std::string_view list) {
    std::vector<std::string> types;
    while (!list.empty()) {
        const auto end = std::min(list.find(';'), list.size());
        const auto type = list.substr(0, end);
        const bool isNew = std::ranges::find(types, type) == types.end();
        if (isNew && isType(type)) types.emplace_back(type);
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    return types;
}

std::vector<std::string> openedTypes(const ambrel::Path& app) {
    const auto info = ambrel::readPropertyList(ambrel::BundleLayout{app}.infoPlist());
    if (!info) return {};
    const auto found = info->find(adoptedMimeTypesKey);
    const auto* const list = found == info->end() ? nullptr : found->second.string();
    return list == nullptr ? std::vector<std::string>() : mimeTypesIn(*list);
}

bool canBrowse(const ambrel::AppBundle& app) {
    const auto types = openedTypes(app.url);
    if (!types.empty()) return std::ranges::any_of(types, isOfWeb);
    const auto engine = ambrel::findEngine(app.url, app.bundleId).engine;
    return engine == ambrel::AppEngine::chromium || engine == ambrel::AppEngine::firefox;
}

} // namespace korvane
