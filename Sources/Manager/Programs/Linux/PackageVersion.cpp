#include "Manager/Programs/Linux/PackageVersion.h"

namespace korvane {

namespace {

std::string_view takeLine(std::string_view& text) {
    const auto end = text.find('\n');
    const auto line = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    return line;
}

/// The file is written for shells: values may stand in quotes, special characters behind "\".
std::string unquoted(std::string_view value) {
    std::string text;
    const bool isQuoted = value.size() >= 2 && (value.front() == '"' || value.front() == '\'') &&
                          value.back() == value.front();
    if (isQuoted) value = value.substr(1, value.size() - 2);
    for (std::size_t i = 0; i < value.size(); ++i) {
        if (value[i] == '\\' && i + 1 < value.size()) ++i;
        text += value[i];
    }
    return text;
}

std::string valueOf(std::string_view osRelease, std::string_view key) {
    std::string value;
    while (!osRelease.empty()) {
        const auto line = takeLine(osRelease);
        const auto equals = line.find('=');
        if (equals == std::string_view::npos || line.substr(0, equals) != key) continue;
        value = unquoted(line.substr(equals + 1)); // as in a shell, the last one counts
    }
    return value;
}

std::string_view leadingDigits(std::string_view text) {
    return text.substr(0, text.find_first_not_of("0123456789"));
}

} // namespace

std::string systemName(std::string_view osRelease) {
    auto name = valueOf(osRelease, "ID");
    const auto version = valueOf(osRelease, "VERSION_ID");
    if (name.empty() || version.empty()) return name;
    return name.append("-").append(version);
}

std::optional<std::string> upstreamSeries(std::string_view version) {
    const auto epoch = version.find(':');
    if (epoch != std::string_view::npos) version.remove_prefix(epoch + 1);
    const auto first = leadingDigits(version);
    if (first.empty()) return std::nullopt;
    version.remove_prefix(first.size());
    const auto second =
        version.starts_with('.') ? leadingDigits(version.substr(1)) : std::string_view();
    return std::string(first) + (second.empty() ? "" : "." + std::string(second));
}

std::optional<std::string> owningPackage(std::string_view output, std::string_view path) {
    while (!output.empty()) {
        const auto line = takeLine(output);
        const auto names = line.substr(0, line.find_first_of(", ")); // "first, second: /path"
        const bool isDiversion = line.starts_with("diversion by ");
        const bool isForPath = line.ends_with(path) && line.size() > path.size() + 2 &&
                               line.substr(0, line.size() - path.size()).ends_with(": ");
        if (!isForPath || isDiversion) continue;
        return std::string(names.ends_with(':') ? names.substr(0, names.size() - 1) : names);
    }
    return std::nullopt;
}

} // namespace korvane
