#pragma once

#include "Manager/Base/Notice.h"
#include "Manager/Base/Refusal.h"
#include "korvane/Output/Surroundings.h"

#include <string>
#include <vector>

namespace korvane {

/// The sentence of the refusal, and what can be done about it in words of this command line. May
/// hold several lines.
std::string wholeText(const Refusal& refusal);
/// The same for a notice, in one line.
std::string wholeText(const Notice& notice);

/// Writes the notice to the messages, a warning marked as one.
void tell(const Surroundings& surroundings, const Notice& notice);
void tell(const Surroundings& surroundings, const std::vector<Notice>& notices);

} // namespace korvane
