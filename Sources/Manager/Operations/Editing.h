#pragma once

#include "Ambrel/Instance/InstanceRegistry.h"
#include "Ambrel/Platform/UserPlaces.h"
#include "Manager/Base/Notice.h"

#include <string>
#include <vector>

namespace korvane {

/// What has been changed.
struct Edited {
    ambrel::InstanceRecord before;
    ambrel::InstanceRecord record; ///< as it is now
    bool homeChanged = false;      ///< the data stays in the home of `before`
    bool iconIsOutdated = false;   ///< only creating the instance again draws another label
    std::vector<Notice> notices;   ///< in the order in which they came up
};

/// Why an edit does not change the field or part `name` of an instance, as a sentence.
std::string whyNotEdited(const std::string& name);

/// Brings the instance `record` from the configuration that it has to `wanted`: its stored
/// configuration, the names in its Info.plist, its home and its desktop entry. Throws Refusal
/// fieldIsBundles for a field that the bundle carries elsewhere too (name, identifier, what it
/// offers, and all overrides but the names of process and windows), unknownUser and homeTaken for
/// another home, changedMeanwhile where the instance is not as `record` says, damagedInstance, and
/// notWritten: then everything is as it was but for notRestored. Also FileError, EncodingError and
/// LibraryError, with nothing changed.
Edited change(const ambrel::InstanceRecord& record, const ambrel::InstanceConfig& wanted,
              const ambrel::UserPlaces& user);

} // namespace korvane
