#include "Manager/Desktop/Linux/EntryText.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Launch/OpenedItems.h"
#include "Ambrel/Platform/Text.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Base/Refusal.h"

#include <algorithm>

namespace korvane::registration {

using ambrel::Path;

namespace {

/// The escapes of the type "string". A blank at either end would be taken for layout.
std::string escaped(std::string_view text) {
    std::string value;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isAtEnd = i == 0 || i + 1 == text.size();
        const auto known = std::string_view("\n\t\r\\ ").find(text[i]);
        if (known == std::string_view::npos || (text[i] == ' ' && !isAtEnd)) {
            value += text[i];
        } else {
            value += '\\';
            value += "ntr\\s"[known];
        }
    }
    return value;
}

/// Line breaks and tabs have an escape; other control characters have none.
bool hasForbiddenControl(std::string_view text) {
    while (!text.empty()) {
        const auto character = ambrel::utf8::takeFirst(text).value_or(0);
        const bool hasEscape = character == '\n' || character == '\t' || character == '\r';
        if (ambrel::utf8::isControl(character) && !hasEscape) return true;
    }
    return false;
}

void requireUtf8Value(std::string_view text) {
    if (ambrel::utf8::isValid(text)) return;
    throw Refusal(Refusal::Kind::notDescribable, std::string(text),
                  "A desktop entry is UTF-8, and cannot hold " + inQuotes(text) + ".");
}

/// What people see.
std::string shown(std::string_view text, const std::string& what) {
    requireUtf8Value(text);
    if (text.empty()) {
        throw Refusal(Refusal::Kind::notDescribable, "",
                      "A desktop entry wants " + what + ", and there is none.");
    }
    if (hasForbiddenControl(text)) {
        throw Refusal(Refusal::Kind::notDescribable, std::string(text),
                      "A desktop entry holds no control characters: " + what + " is " +
                          inQuotes(text) + ".");
    }
    return escaped(text);
}

bool isPlainAscii(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
           std::string_view("/_-.,:+@").find(c) != std::string_view::npos;
}

/// Bytes beyond ASCII mean nothing to the rules for quoting.
bool wantsQuotes(std::string_view path) {
    return !std::all_of(path.begin(), path.end(), [](char c) {
        return isPlainAscii(c) || static_cast<unsigned char>(c) >= 0x80;
    });
}

/// The path as the whole value of Exec, before the escapes of the type "string".
std::string execWord(const Path& path) {
    // "=" is against the rules; "%" is not, but GLib looks for the program with the "%%" that the
    // rules want in its name, and takes the entry for one of a program that is not installed.
    if (path.find_first_of("=%") != Path::npos) {
        throw Refusal(Refusal::Kind::notDescribable, path,
                      "A desktop entry cannot start a program whose path holds \"=\" or \"%\": " +
                          ambrel::utf8::oneLine(path));
    }
    if (!wantsQuotes(path)) return path;
    std::string word = "\"";
    for (const char c : path) {
        if (std::string_view("\"`$\\").find(c) != std::string_view::npos) word += '\\';
        word += c;
    }
    return word + "\"";
}

std::string joined(const std::vector<std::string>& words) {
    std::string list;
    for (const auto& word : words) list.append(word).append(";");
    return list;
}

std::string path(const Path& text) {
    requireUtf8Value(text);
    return escaped(text);
}

} // namespace

std::string entryText(const EntryValues& values) {
    std::string text = "[Desktop Entry]\n";
    const auto add = [&](const std::string& key, const std::string& value) {
        text += key + "=" + value + "\n";
    };
    add("Type", "Application");
    // Nothing newer is used, and checkers refuse versions that they do not know.
    add("Version", "1.0");
    add("Name", shown(values.name, "a name"));
    const bool isOffered = !values.types.empty();
    add("Exec", path(execWord(values.program)) + (isOffered ? " %U" : ""));
    add("Icon", shown(values.icon, "an icon"));
    add("Terminal", "false");
    // A runner does not tell when its program's first window is there.
    add("StartupNotify", "false");
    add("StartupWMClass", shown(values.windowClass, "a window name"));
    add("Categories", values.categories);
    if (isOffered) {
        add("MimeType", joined(values.types));
        // Heeded by KDE alone: whatever else opens a type comes first.
        add("InitialPreference", "0");
    }
    add(bundleKey, path(values.bundle));
    if (!values.home.empty()) add(homeKey, path(values.home));
    return text;
}

bool isPlainWord(std::string_view path) {
    while (!path.empty()) {
        const auto character = ambrel::utf8::takeFirst(path);
        if (!character) return false;
        const bool isPlain = *character < 0x80 ? isPlainAscii(static_cast<char>(*character))
                                               : ambrel::text::isAlphanumeric(*character);
        if (!isPlain) return false;
    }
    return true;
}

std::string openerScript(const Path& program) {
    return "#!/bin/sh\nexec " + shellQuoted(program) + " \"$@\"\n";
}

std::string passingScript(const Path& runner) {
    return "#!/bin/sh\nexec " + shellQuoted(runner) + " " + std::string(ambrel::openArgument) +
           " \"$@\"\n";
}

} // namespace korvane::registration
