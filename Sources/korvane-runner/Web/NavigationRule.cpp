#include "korvane-runner/Web/NavigationRule.h"

#include <algorithm>
#include <array>

namespace korvane::runner {

namespace {

/// What is shown by the engine, or is its own business: a script is none of another program's, and
/// whether a page may go to a file the engine knows.
constexpr std::array<std::string_view, 8> ownSchemes{"http", "https", "about",      "data",
                                                     "blob", "file",  "javascript", "webkit"};
constexpr std::array<std::string_view, 3> expectedSchemes{"mailto", "tel", "sms"};

/// Beyond what a program could be started with.
constexpr std::size_t longestHandedOver = 64 * 1024;

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

bool isInScheme(char c) {
    return isLetter(c) || (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.';
}

template <class List> bool contains(const List& list, std::string_view text) {
    return std::ranges::find(list, text) != list.end();
}

} // namespace

std::string schemeOf(std::string_view url) {
    const auto end = std::ranges::find_if_not(url, isInScheme);
    if (end == url.end() || *end != ':' || !isLetter(url.front())) return {};
    std::string scheme(url.begin(), end);
    for (char& c : scheme) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return scheme;
}

Destination destinationOf(const NavigationRequest& request) {
    const auto scheme = schemeOf(request.url);
    if (scheme.empty() || contains(ownSchemes, scheme)) return Destination::view;
    if (!request.fromClick || request.url.size() > longestHandedOver) return Destination::nowhere;
    return contains(expectedSchemes, scheme) ? Destination::otherProgram
                                             : Destination::otherProgramIfWanted;
}

} // namespace korvane::runner
