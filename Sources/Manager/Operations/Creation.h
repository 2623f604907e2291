#pragma once

#include "Manager/Base/Notice.h"
#include "Manager/Operations/CreationPlan.h"

#include <optional>
#include <string>
#include <vector>

namespace korvane {

/// What has been made.
struct Created {
    ambrel::InstanceRecord record;
    std::optional<ambrel::InstanceRecord> replaced; ///< the instance that stood there before
    std::string reference; ///< what it is called: its name where that alone finds it, else its path
    bool homeExisted = false;              ///< never for a kind that has no use for one
    bool iconKept = false;                 ///< it is that of `replaced`, which was chosen for it
    std::optional<ProgramProfile> profile; ///< that it was made with; absent without one
    std::optional<ambrel::Path> adopted;   ///< the application that was made for it
    std::vector<Notice> notices;           ///< in the order in which they came up
};

/// Makes the instance: its bundle, its home and, where that succeeds, its place on the desktop. The
/// bundle is built aside and put in place in one step. Looks again at what may have changed since
/// the plan was made, once more right before an instance is replaced whether it runs, and throws
/// changedMeanwhile, or what requirePossible() throws; also
/// unusableRunner, unusableIcon, unreadableApplication and notCreated, and FileError, EncodingError
/// and LibraryError. After each of these everything is as it was before.
Created perform(const CreationPlan& plan, const ambrel::UserPlaces& user,
                const ambrel::Environment& environment);

/// Both at once, for when nobody is to be asked in between: nothing is looked at twice. A program
/// that is no application yet becomes one before, and none again where the instance is not made.
Created create(const CreateRequest& request, const ambrel::UserPlaces& user,
               const ambrel::Environment& environment);

} // namespace korvane
