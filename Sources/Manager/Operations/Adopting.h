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
    /// What is to become an application: on Linux the path or id of a desktop entry, or the path or
    /// name of a program.
    std::string program;
    std::optional<ambrel::Path> folder; ///< absolute; absent: "~/Applications"
};

/// What has been made.
struct Adopted {
    ambrel::Path bundle;
    std::string name;      ///< of the application
    ambrel::Path program;  ///< what it starts
    std::string reference; ///< its name where requireApplication() finds it by that, else `bundle`
    bool hasIcon = false;  ///< false where no picture was found for it that could be read
    std::vector<Notice> notices;
};

/// Makes an application bundle out of an installed program. Throws Refusal placeTaken where
/// something stands in its place, badText, unknownProgram, notAdoptable and, on a system where
/// programs are applications already, notOffered; FileError, EncodingError and LibraryError. After
/// each of these everything is as it was before.
Adopted adopt(const AdoptRequest& request, const ambrel::UserPlaces& user,
              const ambrel::Environment& environment);

} // namespace korvane
