#pragma once

#include "Ambrel/Application/AppBundle.h"
#include "Ambrel/Platform/ProcessEnvironment.h"
#include "Ambrel/Platform/UserPlaces.h"
#include "Manager/Programs/Adoption.h"

#include <string>
#include <variant>

namespace korvane {

/// What a person means by the name of a program: an application, or an installed program that can
/// become one.
using MeantProgram = std::variant<ambrel::AppBundle, Adoption>;

/// Whether a program that is an application already is found as that.
enum class KnownApplications {
    areMeant,
    areLast, ///< only where no installed program fits
};

/// What `text` means. A path is that of an application's bundle, of a program or of a menu entry.
/// Anything else is, in this order, an application's name or identifier in the catalog, the id of
/// a menu entry, the name in the menu, that name in another language, or a command. All that fits
/// exactly goes before what fits in another case. Entries that are in no menu count where none is
/// that fits equally. A program of which an application was made is that application.
///
/// Throws Refusal unknownApplication, with the nearest name as alternative, severalApplications,
/// with paths as alternatives, and unreadableApplication and unknownProgram for a path; what
/// planAdoption() throws for a program that was found, also one that is not installed rightly when
/// nothing else fits.
MeantProgram requireMeantProgram(const std::string& text, KnownApplications known,
                                 const ambrel::UserPlaces& user,
                                 const ambrel::Environment& environment);

} // namespace korvane
