#include "Manager/Base/Quoting.h"

#include "Ambrel/Base/Utf8.h"

#include <algorithm>

namespace korvane {

std::string inQuotes(std::string_view text) { return "\"" + ambrel::utf8::oneLine(text) + "\""; }

std::string shellWord(std::string_view word) {
    const auto isPlain = [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return std::isalnum(byte) != 0 || byte >= 0x80 ||
               std::string_view("_-./:@%+,={}~").find(c) != std::string_view::npos;
    };
    if (!word.empty() && std::all_of(word.begin(), word.end(), isPlain)) {
        return ambrel::utf8::oneLine(word);
    }
    return ambrel::utf8::oneLine(shellQuoted(word));
}

std::string shellWords(const std::vector<std::string>& words) {
    std::string list;
    for (const auto& word : words) list += (list.empty() ? "" : " ") + shellWord(word);
    return list;
}

std::string shellQuoted(std::string_view word) {
    std::string quoted = "'";
    for (const char c : word) {
        if (c == '\'') {
            quoted += "'\\''";
        } else {
            quoted += c;
        }
    }
    return quoted + "'";
}

} // namespace korvane
