#pragma once

#include "Ambrel/Instance/InstanceRegistry.h"

#include <optional>

namespace korvane {

/// The application, document or command that the instance opens and that is not there any more:
/// its path. Absent while it is there, where that cannot be told, and for what is no file. Costs
/// one look at the file system.
std::optional<ambrel::Path> missingTarget(const ambrel::InstanceRecord& record,
                                          const ambrel::UserPlaces& user);

} // namespace korvane
