#include "Manager/Desktop/KnownInstances.h"

#include "Manager/Rules/BundlePlace.h"

#include <algorithm>

namespace korvane {

using ambrel::InstanceRecord;
using ambrel::InstanceRegistry;
using ambrel::Path;
using ambrel::UserPlaces;

namespace {

bool isAmong(const std::vector<InstanceRecord>& instances, const Path& bundle) {
    return std::ranges::any_of(instances, [&](const InstanceRecord& known) {
        return isSameBundle(known.bundleURL, bundle);
    });
}

} // namespace

KnownElsewhere requireElsewhere(const UserPlaces& user) {
    return {.entries = registration::requireEntries(user),
            .unregistered = unregisteredHomes::all(user)};
}

KnownElsewhere findElsewhere(const UserPlaces& user) noexcept {
    KnownElsewhere found{.entries = registration::listEntries(user), .unregistered = {}};
    try {
        found.unregistered = unregisteredHomes::all(user);
    } catch (const std::exception&) {
        // What the desktop knows is worth telling without these.
    }
    return found;
}

std::vector<InstanceRecord> knownInstances(const KnownElsewhere& elsewhere, const UserPlaces& user,
                                           const std::vector<InstanceRecord>& first) {
    const InstanceRegistry registry(user);
    auto known = first;
    for (auto& record : registry.list()) {
        if (!isAmong(known, record.bundleURL)) known.push_back(std::move(record));
    }
    const auto addAt = [&](const Path& bundle) {
        if (isAmong(known, bundle)) return;
        if (auto record = registry.recordFor(bundle)) known.push_back(std::move(*record));
    };
    for (const auto& entry : elsewhere.entries) addAt(entry.bundle);
    for (const auto& [bundle, home] : elsewhere.unregistered) addAt(bundle);
    return known;
}

} // namespace korvane
