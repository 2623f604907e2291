#include "Ambrel/Web/WebAddress.h"

#include "Ambrel/Base/Utf8.h"

#include <algorithm>
#include <utility>

namespace ambrel {

namespace {

using Fault = WebAddressFault;

constexpr std::string_view schemeEnd = "://";
constexpr std::string_view guessedScheme = "https";

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

std::string_view withoutLeadingSpace(std::string_view text) {
    while (!text.empty()) {
        auto rest = text;
        const auto character = utf8::takeFirst(rest);
        if (!character || !utf8::isWhiteSpace(*character)) break;
        text = rest;
    }
    return text;
}

/// `text` up to where nothing but white space follows.
std::string_view withoutTrailingSpace(std::string_view text) {
    std::size_t end = 0;
    for (auto rest = text; !rest.empty();) {
        const auto character = utf8::takeFirst(rest);
        const bool isSpace = character && utf8::isWhiteSpace(*character);
        if (!isSpace) end = text.size() - rest.size();
    }
    return text.substr(0, end);
}

/// RFC 3986, 3.1.
bool isScheme(std::string_view text) {
    if (text.empty() || !isLetter(text.front())) return false;
    return std::ranges::all_of(
        text, [](char c) { return isLetter(c) || isDigit(c) || c == '+' || c == '-' || c == '.'; });
}

/// Schemes are the same in capital letters.
bool isWebScheme(std::string_view scheme) {
    const auto is = [&](std::string_view wanted) {
        return std::ranges::equal(scheme, wanted, [](char given, char small) {
            return given == small || (isLetter(given) && (given | 0x20) == small);
        });
    };
    return is("http") || is("https");
}

bool hasSpaceOrControl(std::string_view text) {
    while (!text.empty()) {
        const auto character = utf8::takeFirst(text);
        if (!character || utf8::isControl(*character) || utf8::isWhiteSpace(*character))
            return true;
    }
    return false;
}

/// Where the host ends in `text`, which begins with it: at its port's colon. The colons between
/// brackets are the host's own. Beyond the end where a bracket is not closed.
std::size_t hostLength(std::string_view text) {
    if (!text.starts_with('[')) return std::min(text.find(':'), text.size());
    const auto close = text.find(']');
    return close == std::string_view::npos ? close : close + 1;
}

/// `rest` is what follows the host of a text without a path: nothing, or a colon and a number that
/// may be missing.
bool isPort(std::string_view rest) {
    return rest.empty() || (rest.front() == ':' && std::ranges::all_of(rest.substr(1), isDigit));
}

/// `text` is what follows "://".
std::optional<Fault> findHostFault(std::string_view text) {
    auto authority = text.substr(0, text.find_first_of("/?#"));
    // Names and passwords may hold an "@", hosts do not.
    if (const auto at = authority.rfind('@'); at != std::string_view::npos) {
        authority.remove_prefix(at + 1);
    }
    const auto length = hostLength(authority);
    if (length == std::string_view::npos) return Fault::badHost;
    const auto host = authority.substr(0, length);
    if (host.empty() || host == "[]") return Fault::noHost;
    if (hasSpaceOrControl(host)) return Fault::badHost;
    if (!isPort(authority.substr(length))) return Fault::port;
    return std::nullopt;
}

/// An address to be, and what is wrong with it.
struct Reading {
    std::string url;
    std::optional<Fault> fault;
};

Reading read(std::string_view raw) {
    const auto text = withoutTrailingSpace(withoutLeadingSpace(raw));
    if (text.empty()) return {{}, Fault::empty};
    if (text.starts_with("data:") || text.starts_with("file:")) return {std::string(text), {}};
    const auto end = text.find(schemeEnd);
    if (end == std::string_view::npos) {
        return {std::string(guessedScheme) + std::string(schemeEnd) + std::string(text),
                findHostFault(text)};
    }
    const auto scheme = text.substr(0, end);
    if (!isScheme(scheme)) return {{}, Fault::scheme};
    if (!isWebScheme(scheme)) return {std::string(text), {}};
    return {std::string(text), findHostFault(text.substr(end + schemeEnd.size()))};
}

} // namespace

std::optional<std::string> normalizedURL(std::string_view raw) {
    auto reading = read(raw);
    if (reading.fault) return std::nullopt;
    return std::move(reading.url);
}

std::optional<WebAddressFault> findWebAddressFault(std::string_view raw) { return read(raw).fault; }

} // namespace ambrel
