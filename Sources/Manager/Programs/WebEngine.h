#pragma once

#include <optional>
#include <string>

namespace korvane {

/// The package that the window of a web instance needs and that is not installed. Absent where what
/// it holds is there, and on systems that bring it along. Looks, and starts or loads nothing.
std::optional<std::string> findMissingWebPackage();

} // namespace korvane
