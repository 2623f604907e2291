#pragma once

#include "Ambrel/Base/Path.h"

#include <string>
#include <vector>

namespace korvane {

/// What proves the engine of an installed program, and where an application bundle has it.
struct EngineMark {
    ambrel::Path place; ///< relative to the bundle
    ambrel::Path proof; ///< the file or folder beside the program
};

/// Looks beside `program` (absolute, links followed), and beside the folder of a launcher in "bin":
/// an Electron program has app.asar, or resources.pak with chrome_100_percent.pak, one of the
/// Firefox family application.ini, an Eclipse one eclipse.ini. A Chromium browser, which has the
/// same files as an Electron program, is told by `identifier` and gets no mark.
std::vector<EngineMark> engineMarksOf(const ambrel::Path& program, const std::string& identifier);

} // namespace korvane
