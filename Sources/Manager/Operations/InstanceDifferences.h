#pragma once

#include "Ambrel/Platform/PropertyList.h"
#include "Manager/Operations/Repair.h"

namespace korvane {

/// What differs at one instance and its entry, where `runner` is the one that it is to have.
/// Changes nothing. Throws LibraryError.
std::vector<Difference> differencesOf(const ambrel::InstanceRecord& record,
                                      const ambrel::Path& runner, const ambrel::UserPlaces& user,
                                      const ambrel::Environment& environment);

/// The instance's Info.plist as it should be, with what others have added to `existing`.
ambrel::PropertyListDictionary infoPlistWanted(const ambrel::InstanceRecord& record,
                                               const ambrel::PropertyListDictionary& existing);

} // namespace korvane
