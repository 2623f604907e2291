#pragma once

#include "korvane/Documents/VerbDescription.h"

namespace korvane::documents {

/// The manual in roff: `sheet`, the part of it that is written by hand, with these lines in it
/// replaced:
///     @commands@          every verb and its options
///     @configuration@     the keys of a configuration
/// "@version@" becomes the version wherever it stands. A line "@notes VERB@", "@notes VERB OPTION@"
/// or "@notes GROUP@" begins text to be put behind what is written of that; the next such line ends
/// it, or the end of the sheet. Throws std::runtime_error where notes are about nothing there is.
std::string manual(const std::string& sheet, const std::vector<VerbDescription>& verbs);

} // namespace korvane::documents
