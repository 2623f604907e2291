#pragma once

#include "Ambrel/Instance/InstanceRegistry.h"
#include "Ambrel/Platform/UserPlaces.h"

namespace korvane {

/// Throws Refusal changedMeanwhile unless the bundle of `planned` still holds the configuration
/// that it held when the plan was made.
void requireUnchanged(const ambrel::InstanceRecord& planned, const ambrel::UserPlaces& user);

/// Whether both are the same bundle with the same configuration.
bool isUnchanged(const ambrel::InstanceRecord& planned, const ambrel::InstanceRecord& found);

} // namespace korvane
