#pragma once

#include "korvane/Output/Surroundings.h"

#include <string>
#include <string_view>
#include <vector>

namespace korvane {

/// Writes one line to the messages.
void say(const Surroundings& surroundings, std::string_view line);
/// The same, marked as a warning.
void warn(const Surroundings& surroundings, std::string_view line);

/// The same, as what did not succeed: "korvane: " in front.
void complain(const Surroundings& surroundings, std::string_view text);

/// "korvane VERB WORD…" as it can be typed. A word that begins with "-" gets "--" in front.
std::string commandLine(std::string_view verb, const std::vector<std::string>& words);

/// "1 item", "2 items".
std::string counted(std::size_t count, const std::string& noun);

/// Asks a question that is answered by y or n; anything else is no.
bool confirm(const Surroundings& surroundings, const std::string& question);

} // namespace korvane
