#pragma once

#include "Ambrel/Instance/InstanceConfig.h"

namespace korvane::runner {

/// What stays in the runner for as long as an instance runs.
enum class Host {
    waiting, ///< waits for the program that was started
    menuBar, ///< the same, beside a status item
    web,     ///< shows a web site in a window of its own and starts nothing
};

/// The one place where the host of an instance is chosen. A web site has a window with or without a
/// status item, so its kind goes before its icon.
Host hostFor(const ambrel::InstanceConfig& config) noexcept;

} // namespace korvane::runner
