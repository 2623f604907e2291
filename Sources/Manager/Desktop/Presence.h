#pragma once

#include "Ambrel/Platform/UserPlaces.h"
#include "Manager/Base/Notice.h"
#include "Manager/Desktop/Registration.h"

/// Keeps the desktop in step with what happens to instances. That something goes wrong here is no
/// reason to fail: the instance is as it was asked for, and a notice says what to do.
namespace korvane::presence {

/// Registers a new instance; notRegistered where that failed. Entries under which a bundle in its
/// place was known before go; entryNotRemoved for each that could not. mayBeDefault where its entry
/// offers it for opening something.
std::vector<Notice> created(const ambrel::InstanceRecord& made,
                            const ambrel::UserPlaces& user) noexcept;

/// Brings the entry of a changed instance up to date, else entryIsOutdated; one without an entry
/// gets none.
std::vector<Notice> changed(const ambrel::InstanceRecord& record,
                            const ambrel::UserPlaces& user) noexcept;

/// Gives an instance that has another place now an entry there, in place of `former`, which it had
/// before; entryNotRemoved or notRegistered where that failed. One without an entry gets none.
std::vector<Notice> moved(const std::optional<registration::Entry>& former,
                          const ambrel::InstanceRecord& record,
                          const ambrel::UserPlaces& user) noexcept;

/// Removes the entry, if there is one, of an instance that is gone, else entryNotRemoved.
std::vector<Notice> deleted(const std::optional<registration::Entry>& entry,
                            const ambrel::UserPlaces& user) noexcept;

} // namespace korvane::presence
