#pragma once

#include "Ambrel/Instance/InstanceRegistry.h"
#include "Ambrel/Platform/UserPlaces.h"
#include "Manager/Base/Refusal.h"

namespace korvane {

/// Throws Refusal changedMeanwhile unless the bundle of `planned` still holds the configuration
/// that it held when the plan was made.
void requireUnchanged(const ambrel::InstanceRecord& planned, const ambrel::UserPlaces& user);

/// Refusal changedMeanwhile about what stands at `place`; `more` ends the sentence.
Refusal placeChanged(const ambrel::Path& place, const std::string& more = "");
/// The same about the instance at `bundle`.
Refusal instanceChanged(const ambrel::Path& bundle);

/// Whether both are the same bundle with the same configuration.
bool isUnchanged(const ambrel::InstanceRecord& planned, const ambrel::InstanceRecord& found);

} // namespace korvane
