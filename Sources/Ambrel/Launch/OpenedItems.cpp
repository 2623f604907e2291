#include "Ambrel/Launch/OpenedItems.h"

#include "Ambrel/Platform/FileSystem.h"

#include <algorithm>
#include <optional>

namespace ambrel {

namespace {

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

char lowered(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

/// In ASCII, without regard to case.
bool isSame(std::string_view left, std::string_view right) {
    return std::ranges::equal(left, right, {}, lowered, lowered);
}

/// The scheme of an address (RFC 3986, 3.1); empty without one.
std::string_view schemeOf(std::string_view word) {
    const auto scheme = word.substr(0, word.find(':'));
    if (scheme.size() == word.size() || scheme.empty() || !isLetter(scheme.front())) return {};
    const bool isScheme = std::ranges::all_of(scheme, [](char c) {
        return isLetter(c) || (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.';
    });
    return isScheme ? scheme : std::string_view();
}

std::optional<unsigned> hexadecimal(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (lowered(c) >= 'a' && lowered(c) <= 'f') return lowered(c) - 'a' + 10;
    return std::nullopt;
}

/// The byte of "%41"; absent for what is no escape, and for the bytes that no name of a file holds.
std::optional<char> escapedByte(std::string_view text) {
    if (text.size() < 3) return std::nullopt;
    const auto high = hexadecimal(text[1]);
    const auto low = hexadecimal(text[2]);
    if (!high || !low) return std::nullopt;
    const char byte = static_cast<char>(*high * 16 + *low);
    return byte == '\0' || byte == '/' ? std::nullopt : std::optional(byte);
}

std::optional<Path> percentDecoded(std::string_view text) {
    Path path;
    while (!text.empty()) {
        const bool isEscape = text.front() == '%';
        const auto byte = isEscape ? escapedByte(text) : std::optional(text.front());
        if (!byte) return std::nullopt;
        path += *byte;
        text.remove_prefix(isEscape ? 3 : 1);
    }
    return path;
}

/// The path behind "file:"; absent where it lies on another machine, is none, or names a place in
/// the file too, which programs are to be told of.
std::optional<Path> localPath(std::string_view rest) {
    if (rest.find_first_of("?#") != std::string_view::npos) return std::nullopt;
    if (rest.starts_with("//")) {
        rest.remove_prefix(2);
        const auto host = rest.substr(0, rest.find('/'));
        if (!host.empty() && !isSame(host, "localhost")) return std::nullopt;
        rest.remove_prefix(host.size());
    }
    return rest.starts_with('/') ? percentDecoded(rest) : std::nullopt;
}

std::string openedItem(const std::string& word) {
    if (word.starts_with('/')) return word;
    const auto scheme = schemeOf(word);
    if (scheme.empty() || fileSystem::exists(word)) return fileSystem::absolute(word);
    if (!isSame(scheme, "file")) return word;
    return localPath(std::string_view(word).substr(scheme.size() + 1)).value_or(word);
}

} // namespace

std::vector<std::string> openedItems(const std::vector<std::string>& words) {
    std::vector<std::string> items;
    for (const auto& word : words) {
        if (!word.empty()) items.push_back(openedItem(word));
    }
    return items;
}

std::vector<std::string> openedItems(int count, const char* const* arguments) {
    if (count < 3 || arguments[1] != openArgument) return {};
    return openedItems(std::vector<std::string>(arguments + 2, arguments + count));
}

} // namespace ambrel
