#pragma once

#include "Manager/Desktop/Registration.h"
#include "Manager/Rules/UnregisteredHomes.h"

namespace korvane {

/// What tells of instances that need not lie in the default folder.
struct KnownElsewhere {
    std::vector<registration::Entry> entries;
    std::vector<unregisteredHomes::Known> unregistered;
};

/// All that tells of such instances. Throws FileError where some of it cannot be read.
KnownElsewhere requireElsewhere(const ambrel::UserPlaces& user);

/// The same without what cannot be read.
KnownElsewhere findElsewhere(const ambrel::UserPlaces& user) noexcept;

/// The instances of `first`, those in the default folder, and those that `elsewhere` tells of and
/// that can be read, in this order and each once.
std::vector<ambrel::InstanceRecord>
knownInstances(const KnownElsewhere& elsewhere, const ambrel::UserPlaces& user,
               const std::vector<ambrel::InstanceRecord>& first = {});

} // namespace korvane
