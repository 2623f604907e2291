#include "Manager/Operations/Registering.h"

#include "Manager/Rules/UnregisteredHomes.h"

namespace korvane {

using ambrel::InstanceRecord;
using ambrel::UserPlaces;
using registration::Entry;

Entry registerInstance(const InstanceRecord& record, const UserPlaces& user,
                       const ambrel::Environment& environment) {
    registration::requireFree(record.config.bundleId, record.bundleURL, user, environment,
                              Remedy::createAgainWithIdentifier);
    auto entry = registration::add(record, user);
    unregisteredHomes::forget(record, user);
    return entry;
}

std::optional<Entry> unregisterInstance(const InstanceRecord& record, const UserPlaces& user) {
    auto entry = registration::findEntry(record, user);
    // First, so that there is no moment at which its home looks left over.
    unregisteredHomes::remember(record, user);
    if (entry) registration::remove(*entry, user);
    return entry;
}

} // namespace korvane
