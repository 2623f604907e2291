#pragma once

#include "korvane/Documents/VerbDescription.h"

#include <map>

namespace korvane::documents {

/// The pages of the manual in roff by the names of their files: "korvane.1", which is `sheet`, the
/// part that is written by hand, with these lines in it replaced:
///     @commands@          every verb, in one list
///     @configuration@     the keys of a configuration
///     @pages@             references to all other pages
/// and "korvane-VERB.1" with the options of each verb. Those that have their first word in common
/// share a page, to which their whole names and aliases lead.
/// "@version@" becomes the version wherever it stands. A line "@notes VERB@" begins text to be put
/// behind what is written of that verb; "@notes VERB OPTION@", "@notes GROUP@" and "@notes GROUP
/// OPTION@" do the same. The next such line ends it, or the end of the sheet. Throws
/// std::runtime_error where notes are about nothing there is.
std::map<std::string, std::string> manual(const std::string& sheet,
                                          const std::vector<VerbDescription>& verbs);

} // namespace korvane::documents
