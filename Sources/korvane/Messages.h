#pragma once

#include "korvane/Surroundings.h"

#include <string>
#include <string_view>
#include <vector>

namespace korvane {

/// Writes one line to the messages.
void say(const Surroundings& surroundings, std::string_view line);
/// The same, marked as a warning.
void warn(const Surroundings& surroundings, std::string_view line);

/// `text` in double quotes for a message, with everything escaped that could fake a line.
std::string inQuotes(std::string_view text);

/// `word` as a shell takes it back: plain where that is safe, else in single quotes.
std::string shellWord(std::string_view word);

/// `word` in single quotes, byte for byte, for a script.
std::string shellQuoted(std::string_view word);

/// "korvane VERB WORD…" as it can be typed. A word that begins with "-" gets "--" in front.
std::string commandLine(std::string_view verb, const std::vector<std::string>& words);

/// The known word that `typed` was probably meant to be, or empty.
std::string nearest(std::string_view typed, const std::vector<std::string>& known);

/// "1 item", "2 items".
std::string counted(std::size_t count, const std::string& noun);

/// Asks a question that is answered by y or n; anything else is no.
bool confirm(const Surroundings& surroundings, const std::string& question);

} // namespace korvane
