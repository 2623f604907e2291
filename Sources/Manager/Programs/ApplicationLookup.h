#pragma once

#include "Ambrel/Application/AppBundle.h"
#include "Ambrel/Platform/ProcessEnvironment.h"
#include "Ambrel/Platform/UserPlaces.h"

#include <string>

namespace korvane {

/// The application that `text` means: the path of a bundle, or the name or identifier of one that
/// the catalog lists. Throws Refusal unknownApplication, with what can be done about it,
/// severalApplications, with their bundles as alternatives, and unreadableApplication for a path.
/// `environment` says where an installed program of that name would be found.
ambrel::AppBundle requireApplication(const std::string& text, const ambrel::UserPlaces& user,
                                     const ambrel::Environment& environment);

} // namespace korvane
