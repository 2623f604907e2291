#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace korvane {

/// `text` in double quotes for a message, with everything escaped that could fake a line.
std::string inQuotes(std::string_view text);

/// `word` as a shell takes it back: plain where that is safe, else in single quotes.
std::string shellWord(std::string_view word);

/// `words` as a shell takes them back, with blanks between them.
std::string shellWords(const std::vector<std::string>& words);

/// `word` in single quotes, byte for byte, for a script.
std::string shellQuoted(std::string_view word);

} // namespace korvane
