#pragma once

#include "Ambrel/Base/Path.h"
#include "Ambrel/Platform/ProcessEnvironment.h"
#include "Ambrel/Platform/UserPlaces.h"
#include "Manager/Base/Notice.h"

#include <optional>
#include <string>
#include <vector>

namespace korvane {

struct AdoptRequest {
    std::string program; ///< what is to become an application, for requireMeantProgram()
    std::optional<ambrel::Path> folder; ///< absolute; absent: "~/Applications"
};

/// What has been made.
struct Adopted {
    ambrel::Path bundle;
    std::string name;     ///< of the application
    ambrel::Path program; ///< what it starts
    bool hasIcon = false; ///< false where no picture was found for it that could be read
    bool existed = false; ///< it was an application before, and nothing was made
    std::vector<Notice> notices;
};

/// Makes an application bundle out of an installed program, unless it is one already: without a
/// folder, wherever the catalog lists it, else in that folder. Throws what requireMeantProgram()
/// throws, Refusal placeTaken where something else stands in its place, and badText; FileError,
/// EncodingError and LibraryError. After each of these everything is as it was before.
Adopted adopt(const AdoptRequest& request, const ambrel::UserPlaces& user,
              const ambrel::Environment& environment);

/// What requireApplication() finds the application by: its name where that does, else its bundle.
/// Looks through the catalog.
std::string referenceTo(const Adopted& adopted, const ambrel::UserPlaces& user);

} // namespace korvane
