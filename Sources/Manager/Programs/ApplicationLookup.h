#pragma once

#include "Ambrel/Application/AppBundle.h"
#include "Ambrel/Platform/ProcessEnvironment.h"
#include "Ambrel/Platform/UserPlaces.h"

#include <string>

namespace korvane {

/// The application that `text` means by the rules of requireMeantProgram(), and with its refusals.
/// For an installed program that is none yet, throws unknownApplication with the remedy adoptFirst.
ambrel::AppBundle requireApplication(const std::string& text, const ambrel::UserPlaces& user,
                                     const ambrel::Environment& environment);

} // namespace korvane
