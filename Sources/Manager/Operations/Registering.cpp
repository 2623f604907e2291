#include "Manager/Operations/Registering.h"

namespace korvane {

using ambrel::InstanceRecord;
using ambrel::UserPlaces;
using registration::Entry;

Entry registerInstance(const InstanceRecord& record, const UserPlaces& user,
                       const ambrel::Environment& environment) {
    registration::requireFree(record.config.bundleId, record.bundleURL, user, environment,
                              Remedy::createAgainWithIdentifier);
    return registration::add(record, user);
}

std::optional<Entry> unregisterInstance(const InstanceRecord& record, const UserPlaces& user) {
    auto entry = registration::findEntry(record, user);
    if (entry) registration::remove(*entry, user);
    return entry;
}

} // namespace korvane
