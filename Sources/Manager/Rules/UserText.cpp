#include "Manager/Rules/UserText.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/Text.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Base/Refusal.h"

#include <algorithm>
#include <sstream>

namespace korvane {

using Kind = Refusal::Kind;

namespace {

constexpr std::size_t longestFileName = 255;
constexpr std::string_view bundleExtension = ".app";

bool hasControl(std::string_view text) {
    while (!text.empty()) {
        const auto character = ambrel::utf8::takeFirst(text);
        if (character && ambrel::utf8::isControl(*character)) return true;
    }
    return false;
}

/// `path` without the components that stand for the folder they are in. ".." stays: what it means
/// depends on links.
ambrel::Path withoutDots(const ambrel::Path& path) {
    ambrel::Path result = path.starts_with('/') ? "/" : "";
    std::istringstream components(path);
    for (std::string component; std::getline(components, component, '/');) {
        if (component.empty() || component == ".") continue;
        result = ambrel::paths::join(result, component);
    }
    return result;
}

} // namespace

std::string checkedName(std::string_view text) {
    requireUtf8(text, "the name");
    const auto name = ambrel::text::trimmingWhitespaceAndNewlines(text);
    const auto refuse = [&](const std::string& reason) {
        throw Refusal(Kind::badName, name,
                      "The name " + inQuotes(name) + " cannot be used: " + reason);
    };
    if (name.empty())
        throw Refusal(Kind::badName, name, "The name is empty: an instance needs one.");
    if (name.find('/') != std::string::npos) refuse("it holds a \"/\", which separates folders.");
    if (hasControl(name)) refuse("it holds a control character.");
    if (name == "." || name == "..") refuse("it stands for a folder.");
    if (name.starts_with('.')) refuse("it begins with a dot, which hides files.");
    if (name.size() + bundleExtension.size() > longestFileName) {
        refuse("it is too long for a file name (" + std::to_string(name.size()) + " bytes, " +
               std::to_string(longestFileName - bundleExtension.size()) + " fit).");
    }
    return name;
}

void requireUtf8(std::string_view text, const std::string& what) {
    if (ambrel::utf8::isValid(text)) return;
    throw Refusal(Kind::badText, std::string(text),
                  "The text of " + what + " is not UTF-8: " + inQuotes(text));
}

void requireUtf8Each(const std::vector<std::string>& texts, const std::string& what) {
    for (const auto& text : texts) requireUtf8(text, what);
}

namespace {

void requirePath(std::string_view text) {
    if (!text.empty()) return;
    throw Refusal(Kind::badPath, "", "A path is missing: the text given for it is empty.");
}

} // namespace

ambrel::Path storedPath(std::string_view text) {
    requirePath(text);
    if (text.starts_with('~')) return withoutDots(ambrel::Path(text));
    return withoutDots(ambrel::fileSystem::absolute(ambrel::Path(text)));
}

ambrel::Path usablePath(std::string_view text, const ambrel::UserPlaces& user) {
    requirePath(text);
    const ambrel::Path path{ambrel::paths::withoutTrailingSlashes(text)};
    return withoutDots(ambrel::fileSystem::absolute(user.expandingTilde(path)));
}

std::string checkedColor(const std::string& text) {
    const auto digits = text.starts_with('#') ? text.substr(1) : text;
    const bool valid = digits.size() == 6 && std::all_of(digits.begin(), digits.end(), [](char c) {
                           return std::isxdigit(static_cast<unsigned char>(c)) != 0;
                       });
    if (!valid) {
        throw Refusal(Kind::badColor, text,
                      "A color is six hexadecimal digits, as in FF8800, not " + inQuotes(text) +
                          ".");
    }
    return text;
}

} // namespace korvane
