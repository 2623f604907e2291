#include "korvane/Output/Wrapping.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Platform/Text.h"

#include <algorithm>
#include <vector>

namespace korvane {

namespace {

/// Breaks one line.
std::string wrappedLine(std::string_view line, std::size_t indent, std::size_t room) {
    const auto margin = "\n" + std::string(indent, ' ');
    std::string result;
    std::size_t used = 0;
    while (!line.empty()) {
        const auto word = line.substr(0, line.find(' '));
        line.remove_prefix(std::min(word.size() + 1, line.size()));
        const auto columns = ambrel::text::columnsOf(word);
        const bool fits = used + 1 + columns <= room;
        if (used > 0) result += fits ? " " : margin;
        used = used > 0 && fits ? used + 1 + columns : columns;
        result += word;
    }
    return result;
}

std::vector<std::string> charactersOf(std::string_view text) {
    std::vector<std::string> characters;
    while (!text.empty()) {
        const auto before = text;
        ambrel::utf8::takeFirst(text);
        const std::string character(before.substr(0, before.size() - text.size()));
        // What stands on the one before it is cut off together with that.
        const bool joins = !characters.empty() && ambrel::text::columnsOf(character) == 0;
        if (joins) {
            characters.back() += character;
        } else {
            characters.push_back(character);
        }
    }
    return characters;
}

/// As many as fit into `room` columns.
template <class Range> std::size_t countFitting(const Range& characters, std::size_t room) {
    std::size_t count = 0;
    for (const auto& character : characters) {
        const auto columns = ambrel::text::columnsOf(character);
        if (columns > room) break;
        room -= columns;
        ++count;
    }
    return count;
}

} // namespace

std::string wrapped(std::string_view text, std::size_t indent, std::optional<std::size_t> width) {
    if (!width) return std::string(text);
    constexpr std::size_t narrowest = 20;
    const auto columns = std::min(*width, widestText);
    const auto room = columns > indent + narrowest ? columns - indent : narrowest;
    std::string result;
    for (bool isFirst = true; isFirst || !text.empty(); isFirst = false) {
        const auto line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        if (!isFirst) result += "\n" + std::string(indent, ' ');
        result += wrappedLine(line, indent, room);
    }
    return result;
}

std::string shortened(const std::string& text, std::size_t columns) {
    if (ambrel::text::columnsOf(text) <= columns || columns == 0) return text;
    const auto characters = charactersOf(text);
    const auto atStart = countFitting(characters, (columns - 1) / 3);
    const std::vector<std::string> backwards(characters.rbegin(), characters.rend());
    const auto atEnd = countFitting(backwards, columns - 1 - (columns - 1) / 3);
    std::string result;
    for (std::size_t i = 0; i < atStart; ++i) result += characters[i];
    result += "…";
    for (auto i = characters.size() - atEnd; i < characters.size(); ++i) result += characters[i];
    return result;
}

} // namespace korvane
