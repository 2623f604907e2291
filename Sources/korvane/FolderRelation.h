#pragma once

#include "Ambrel/Support/FolderRelation.h"

namespace korvane {

namespace folders = ambrel::folders;

} // namespace korvane
