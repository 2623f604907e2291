#pragma once

#include "Ambrel/Instance/InstanceRegistry.h"
#include "Manager/Base/Notice.h"

#include <optional>
#include <vector>

namespace korvane {

/// Where the instance stands and what could not be tidied up.
struct Rebuilt {
    ambrel::Path bundle;
    std::vector<Notice> notices;
};

/// Whether the bundle has to be built anew to get from `before` to `wanted`: for another name, or
/// another label on its icon.
bool needsRebuilding(const ambrel::InstanceConfig& before, const ambrel::InstanceConfig& wanted);

/// The bundle of the instance `record` once it is called as `wanted` says: in the same folder, and
/// where it is unless the name changes.
ambrel::Path placeFor(const ambrel::InstanceRecord& record, const ambrel::InstanceConfig& wanted);

/// Builds the bundle of `record` aside with the configuration `wanted`, its own runner and the icon
/// `icon`, absent: the one that it has, and puts it in place of the old one, under the new name
/// where that is another. Throws what iconSourceOf() throws, and Refusal placeTaken,
/// changedMeanwhile, unusableIcon, unreadableApplication and damagedInstance, FileError,
/// EncodingError and LibraryError, with everything as it was.
Rebuilt rebuild(const ambrel::InstanceRecord& record, const ambrel::InstanceConfig& wanted,
                const std::optional<ambrel::Path>& icon, const ambrel::UserPlaces& user);

} // namespace korvane
