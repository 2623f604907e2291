#pragma once

#include "Ambrel/Platform/SoleProcess.h"

#include <functional>

namespace korvane::runner {

/// What became of a start that wants a folder of data for itself. Neither where it cannot be had:
/// the file system knows no locks, or who has it neither listens nor ends.
struct DataClaim {
    std::optional<ambrel::SoleProcess> own;
    bool isLeftToOther = false; ///< the process that has the folder was told `message`

    /// Claims `folder`, or leaves `message` with the process that has it. One that is about to end
    /// listens no more: then it is tried again for as long as `pause`, which is called in between,
    /// says so. An instance that is closed and opened at once has its window by this.
    static DataClaim make(const ambrel::Path& folder, std::string_view message,
                          const std::function<bool()>& pause);
};

} // namespace korvane::runner
