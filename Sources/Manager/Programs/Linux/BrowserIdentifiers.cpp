#include "Manager/Programs/Linux/BrowserIdentifiers.h"

#include <algorithm>
#include <string_view>

namespace korvane {

namespace {

struct KnownBrowser {
    std::string_view name;
    std::string_view identifier;
};

constexpr KnownBrowser knownBrowsers[] = {
    {"google-chrome", "com.google.chrome"},
    {"brave-browser", "com.brave.browser"},
    {"brave", "com.brave.browser"},
    {"microsoft-edge", "com.microsoft.edgemac"},
    {"vivaldi", "com.vivaldi.vivaldi"},
    {"opera", "com.operasoftware.opera"},
    {"chromium-browser", "org.chromium.chromium"},
    {"chromium", "org.chromium.chromium"},
    {"yandex-browser", "ru.yandex.desktop.yandex-browser"},
    {"firefox", "org.mozilla.firefox"},
    {"thunderbird", "org.mozilla.thunderbird"},
    {"torbrowser", "org.torproject.torbrowser"},
    {"tor-browser", "org.torproject.torbrowser"},
    {"librewolf", "net.librewolf.librewolf"},
    {"waterfox", "net.waterfox.waterfox"},
};

/// Endings of the names above that mean the same browser; others belong to other programs.
constexpr std::string_view knownVariants[] = {
    "-beta",
    "-dev",
    "-unstable",
    "-canary",
    "-snapshot",
    "-developer",
    "-developer-edition",
    "-devedition",
    "-nightly",
    "-aurora",
    "-esr",
    "-corporate",
};

} // namespace

std::optional<std::string> wellKnownIdentifier(const std::string& name) {
    for (const auto& known : knownBrowsers) {
        if (!name.starts_with(known.name)) continue;
        const auto variant = name.substr(known.name.size());
        if (variant.empty() || variant == "-stable") return std::string(known.identifier);
        // Two variants of a browser are two applications, with an identifier each.
        const auto* const last = std::end(knownVariants);
        if (std::find(std::begin(knownVariants), last, variant) == last) continue;
        return std::string(known.identifier) + variant;
    }
    return std::nullopt;
}

} // namespace korvane
