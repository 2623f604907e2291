#pragma once

#include "Manager/Desktop/Registration.h"
#include "korvane/Output/Surroundings.h"

/// Keeps the desktop in step with what happens to instances. That something goes wrong here is no
/// reason to fail: the instance is as it was asked for, and a warning says what to do.
namespace korvane::presence {

/// Registers a new instance. Entries under which a bundle in its place was known before go.
void created(const ambrel::InstanceRecord& made, const Surroundings& surroundings) noexcept;

/// Brings the entry of a changed instance up to date; one without an entry gets none.
void changed(const ambrel::InstanceRecord& record, const Surroundings& surroundings) noexcept;

/// Removes the entry, if there is one, of an instance that is gone.
void deleted(const std::optional<registration::Entry>& entry,
             const Surroundings& surroundings) noexcept;

} // namespace korvane::presence
