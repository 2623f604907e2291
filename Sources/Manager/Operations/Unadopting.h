#pragma once

#include "Ambrel/Base/Path.h"
#include "Ambrel/Platform/ProcessEnvironment.h"
#include "Ambrel/Platform/UserPlaces.h"
#include "Manager/Base/Notice.h"

#include <string>
#include <vector>

namespace korvane {

/// What has been taken away.
struct Unadopted {
    ambrel::Path bundle;
    std::string name;            ///< of the application
    std::vector<Notice> notices; ///< remainsLeft
};

/// Removes the application that adopt() has made of a program, and nothing else: the program and
/// all instances stay. `application` is for requireMeantProgram(). Throws what that throws, and
/// Refusal notAdopted for what adopt() has not made or somebody has added something to, and
/// applicationNeeded, with their names as alternatives, where instances start it: those in the
/// default folder, beside the bundle, and elsewhere those that the desktop knows or that were taken
/// off it. Also notRemoved, with everything as it was before.
Unadopted unadopt(const std::string& application, const ambrel::UserPlaces& user,
                  const ambrel::Environment& environment);

} // namespace korvane
