#pragma once

#include "Ambrel/Instance/InstanceRegistry.h"
#include "Ambrel/Platform/ProcessEnvironment.h"
#include "Ambrel/Platform/UserPlaces.h"
#include "Manager/Desktop/Registration.h"

#include <optional>

namespace korvane {

/// Shows the instance on the desktop, or brings what is shown up to date, and returns its entry.
/// Throws Refusal entryTaken, homeIsMissing and notDescribable with nothing written, and FileError,
/// after which it can be tried again.
registration::Entry registerInstance(const ambrel::InstanceRecord& record,
                                     const ambrel::UserPlaces& user,
                                     const ambrel::Environment& environment);

/// Takes the instance off the desktop, and returns the entry that it had; absent where it had none.
/// Throws FileError, after which it can be tried again.
std::optional<registration::Entry> unregisterInstance(const ambrel::InstanceRecord& record,
                                                      const ambrel::UserPlaces& user);

} // namespace korvane
