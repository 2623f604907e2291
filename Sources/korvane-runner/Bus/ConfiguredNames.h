#pragma once

#include "Ambrel/Instance/InstanceConfig.h"
#include "korvane-runner/Bus/NamePolicy.h"

namespace korvane::runner::bus {

/// Whether an instance of that configuration is to have names of its own on the bus, where there is
/// one: an application that neither is to share the user's names nor is given a bus by its
/// configuration.
bool wantsOwnNames(const ambrel::InstanceConfig& config);

/// What such an instance shares with the user.
NamePolicy configuredPolicy(const ambrel::InstanceConfig& config);

} // namespace korvane::runner::bus
