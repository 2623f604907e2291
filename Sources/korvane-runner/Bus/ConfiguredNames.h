#pragma once

#include "Ambrel/Instance/InstanceConfig.h"
#include "korvane-runner/Bus/NamePolicy.h"

namespace korvane::runner::bus {

/// What an instance of that configuration shares with the user, where it has names of its own.
NamePolicy configuredPolicy(const ambrel::InstanceConfig& config);

} // namespace korvane::runner::bus
