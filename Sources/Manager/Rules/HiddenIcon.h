#pragma once

#include "Ambrel/Instance/InstanceRegistry.h"

namespace korvane {

/// Whether the instance was made not to be shown among the running applications. Only its
/// Info.plist tells of it, and not the configuration: where an override of that has the last word,
/// this is false.
bool isHidden(const ambrel::InstanceRecord& record);

} // namespace korvane
