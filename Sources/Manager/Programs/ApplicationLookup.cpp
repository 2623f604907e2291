#include "Manager/Programs/ApplicationLookup.h"

#include "Manager/Base/Quoting.h"
#include "Manager/Base/Refusal.h"
#include "Manager/Programs/ProgramSearch.h"

namespace korvane {

ambrel::AppBundle requireApplication(const std::string& text, const ambrel::UserPlaces& user,
                                     const ambrel::Environment& environment) {
    auto meant = requireMeantProgram(text, KnownApplications::areMeant, user, environment);
    if (auto* app = std::get_if<ambrel::AppBundle>(&meant)) return std::move(*app);
    throw Refusal(Refusal::Kind::unknownApplication, text,
                  inQuotes(std::get<Adoption>(meant).name) +
                      " is an installed program, and no application yet.",
                  Remedy::adoptFirst);
}

} // namespace korvane
