#include "korvane-runner/Bus/NameSyntax.h"

#include "Ambrel/Base/BusName.h"
#include "Ambrel/Base/TextParts.h"

#include <algorithm>

namespace korvane::runner::bus {

namespace {

enum class Hyphen { allowed, refused };

bool isElement(std::string_view text, Hyphen hyphen) {
    return !text.empty() && std::ranges::all_of(text, [hyphen](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               c == '_' || (c == '-' && hyphen == Hyphen::allowed);
    });
}

// The bus takes ":", ":1" and ":.1" for unique names, which nobody ever has. Whoever stands before
// it does so as well: the answer is the bus's.
bool isUniqueNameBehindColon(std::string_view text) {
    if (text.empty()) return true;
    if (text.starts_with('.')) text.remove_prefix(1);
    if (text.ends_with('.') || text.empty()) return false;
    while (!text.empty()) {
        if (!isElement(ambrel::takeUntil(text, '.'), Hyphen::allowed)) return false;
    }
    return true;
}

} // namespace

bool isBusName(std::string_view name) {
    if (!isUniqueName(name)) return ambrel::isWellKnownBusName(name);
    return name.size() <= longestName && isUniqueNameBehindColon(name.substr(1));
}

bool isNameSpace(std::string_view name) { return ambrel::isBusNameSpace(name); }

// The names of interfaces and members are those of programs, but for characters.
bool isInterfaceName(std::string_view name) {
    return ambrel::isWellKnownBusName(name) && name.find('-') == std::string_view::npos;
}

bool isErrorName(std::string_view name) { return isInterfaceName(name); }

bool isMemberName(std::string_view name) {
    return ambrel::isBusNameSpace(name) && name.find_first_of(".-") == std::string_view::npos;
}

bool isObjectPath(std::string_view path) {
    if (path == "/") return true;
    while (path.starts_with('/')) {
        path.remove_prefix(1);
        const auto end = std::min(path.find('/'), path.size());
        if (!isElement(path.substr(0, end), Hyphen::refused)) return false;
        path.remove_prefix(end);
        if (path.empty()) return true;
    }
    return false;
}

} // namespace korvane::runner::bus
