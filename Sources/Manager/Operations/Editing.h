#pragma once

#include "Ambrel/Instance/InstanceRegistry.h"
#include "Ambrel/Platform/ProcessEnvironment.h"
#include "Ambrel/Platform/UserPlaces.h"
#include "Manager/Base/Notice.h"

#include <optional>
#include <string>
#include <vector>

namespace korvane {

/// What has been changed.
struct Edited {
    ambrel::InstanceRecord before;
    ambrel::InstanceRecord record; ///< as it is now
    bool homeChanged = false;      ///< the data stays in the home of `before`
    std::vector<Notice> notices;   ///< in the order in which they came up
};

/// Why an edit does not change the field or part `name` of an instance, as a sentence.
std::string whyNotEdited(const std::string& name);

/// Brings the instance `record` from the configuration that it has to `wanted`: its stored
/// configuration, the names in its Info.plist, its label, its name and with that its place, its
/// home and its desktop entry; identifier and home stay when it is renamed. `icon` is a picture for
/// its icon, absent: the one that it has. For another name, label or icon the bundle is built aside
/// and put in place in one step. `environment` serves to work out what keeps the instance apart:
/// that it goes is a notice. Throws Refusal fieldIsBundles for a field that the bundle carries
/// elsewhere too (kind, identifier, what it offers, and all overrides but the names of process and
/// windows and those about the session's bus), hasNoEffect for one that its kind does not heed,
/// badBusSetting, unknownUser and homeTaken for another home, badName, instanceRuns and
/// bundleIsLink for another name, what rebuild() throws, changedMeanwhile where the instance is not
/// as `record` says, damagedInstance and notWritten. Also FileError, EncodingError and
/// LibraryError. After each of these everything is as it was.
Edited change(const ambrel::InstanceRecord& record, const ambrel::InstanceConfig& wanted,
              const ambrel::UserPlaces& user, const ambrel::Environment& environment = {},
              const std::optional<ambrel::Path>& icon = {});

} // namespace korvane
