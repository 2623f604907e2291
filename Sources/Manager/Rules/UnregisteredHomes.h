#pragma once

#include "Ambrel/Instance/InstanceRegistry.h"

#include <vector>

/// Instances outside ~/Applications that were taken off the desktop. Nothing else tells that there
/// are such, so that their homes would look left over. Each has a file of its own below user.data,
/// called by its desktop id.
namespace korvane::unregisteredHomes {

struct Known {
    ambrel::Path bundle;
    ambrel::Path home;
};

/// Keeps in mind where the instance and its home lie; one in ~/Applications is found without that.
/// Throws FileError.
void remember(const ambrel::InstanceRecord& record, const ambrel::UserPlaces& user);

/// The instance is gone, or the desktop knows it again. Never fails.
void forget(const ambrel::InstanceRecord& record, const ambrel::UserPlaces& user) noexcept;

/// Those that are kept in mind, there or not. Throws FileError.
std::vector<Known> all(const ambrel::UserPlaces& user);

} // namespace korvane::unregisteredHomes
