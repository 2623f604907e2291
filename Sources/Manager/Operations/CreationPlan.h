#pragma once

#include "Ambrel/Instance/InstanceRegistry.h"
#include "Ambrel/Platform/ProcessEnvironment.h"
#include "Ambrel/Platform/UserPlaces.h"
#include "Ambrel/Wrapper/WrapperFactory.h"
#include "Manager/Files/TreeSize.h"
#include "Manager/Operations/CreateRequest.h"

#include <optional>
#include <string>
#include <vector>

namespace korvane {

/// What becomes of the parts of an instance that is replaced, in words.
struct KeptParts {
    std::vector<std::string> kept;
    std::vector<std::string> dropped; ///< what an earlier version of its profile had given
};

/// What would be done for a request.
struct CreationPlan {
    /// As it was given, with the name trimmed and what is kept of the replaced instance.
    CreateRequest request;
    ambrel::WrapperFactory::Request wrapper;   ///< with everything worked out
    std::optional<ambrel::AppBundle> target;   ///< app kind
    std::optional<StartPlan> start;            ///< app kind: how the target is started
    std::optional<std::string> missingPackage; ///< web kind: what its window lacks here

    ambrel::Path bundle;                            ///< where the instance will stand
    std::optional<ambrel::InstanceRecord> replaced; ///< goes; its data stays
    TreeSize replacedSize;                          ///< of the bundle that goes
    KeptParts parts;                                ///< of `replaced`
    bool homeExists = false;                        ///< the home is there, with what is in it
    /// What the instance will be called: its name where that alone finds it, else its path.
    std::string reference;
};

/// Looks at everything that a new instance depends on; writes nothing. Throws what
/// requireSensible() throws, and Refusal unreadableApplication, unknownProgram, notOffered,
/// unusableIcon, unusableProfile, hasNoEffect for an application that names no types of files, and
/// what requirePossible() throws; for a request with a program what requireApplication() throws, so
/// that one which is no application yet is refused with adoptFirst. LibraryError where the system
/// lacks what applications are read with.
CreationPlan planCreation(const CreateRequest& request, const ambrel::UserPlaces& user,
                          const ambrel::Environment& environment);

/// The part of planCreation() that works out how the plan's target is started, for an instance that
/// the desktop knows as `desktopId`: arguments, environment, overrides and strategy as they will be
/// stored. Needs the request and the target. Throws Refusal unusableProfile.
void planStartFor(CreationPlan& plan, const std::string& desktopId, const ambrel::UserPlaces& user,
                  const ambrel::Environment& environment);

/// Throws Refusal where something is in the way of the plan: notAnInstance or instanceExists for
/// what stands in its place, instanceRuns for what would be replaced, unknownUser for the home,
/// identifierTaken, homeTaken and entryTaken;
/// `instances` are those that instancesWith() finds. Returns the instance that would be replaced.
std::optional<ambrel::InstanceRecord>
requirePossible(const CreationPlan& plan, const std::vector<ambrel::InstanceRecord>& instances,
                const ambrel::UserPlaces& user, const ambrel::Environment& environment);

} // namespace korvane
