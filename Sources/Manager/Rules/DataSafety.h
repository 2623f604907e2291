#pragma once

#include "Ambrel/Instance/InstanceRegistry.h"
#include "Manager/Base/Remedy.h"

#include <vector>

namespace korvane {

/// Throws Refusal unless the data of `record` can be deleted without taking anything else along:
/// its home is not, does not contain and does not lead to the user's own home or one of the
/// folders in it that hold the user's own files (homeIsUsers), shares no place with the home of
/// another of `instances` (homeIsShared; one whose home is or contains the user's own does not
/// count), is an absolute path (homeIsMissing) and no link (homeIsLink), and the bundle is none
/// either (bundleIsLink). An instance without a home has no data, and is not refused.
void requireDeletableData(const ambrel::InstanceRecord& record,
                          const std::vector<ambrel::InstanceRecord>& instances,
                          const ambrel::UserPlaces& user);

/// Throws Refusal homeIsUsers, with this remedy, when the home of `config` is or contains one of
/// the user's folders that instances share, but not the whole of the user's home.
void requireNoUserFolder(const ambrel::InstanceConfig& config, const ambrel::UserPlaces& user,
                         Remedy remedy);

} // namespace korvane
