#pragma once

#include "Ambrel/InstanceConfig.h"
#include "korvane/NewFolders.h"

#include <vector>

namespace korvane {

/// Makes the instance's home, for this user alone, and the data folders inside it that the
/// arguments name: Firefox starts nothing without its profile folder. Throws FileError.
void prepareHome(const ambrel::InstanceConfig& config, NewFolders& folders);

/// The folders below the home that the arguments of a known engine name, absolute.
std::vector<ambrel::Path> dataFolders(const ambrel::InstanceConfig& config);

} // namespace korvane
