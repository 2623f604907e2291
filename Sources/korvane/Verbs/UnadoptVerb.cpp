#include "korvane/Verbs/UnadoptVerb.h"

#include "Ambrel/Base/Utf8.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Operations/Unadopting.h"
#include "korvane/CommandLine/Options.h"
#include "korvane/Output/Messages.h"
#include "korvane/Output/Remedies.h"

#include <memory>

namespace korvane {

namespace {

int unadoptApplication(const std::string& application, const Surroundings& surroundings) {
    const auto done = unadopt(application, surroundings.user, surroundings.environment);
    say(surroundings, "Removed the application " + inQuotes(done.name) + " at " +
                          ambrel::utf8::oneLine(done.bundle) + "; its program stays installed.");
    tell(surroundings, done.notices);
    return 0;
}

} // namespace

Verb unadoptVerb() {
    return {"unadopt",
            "Remove the application that \"adopt\" made of a program.",
            {"korvane unadopt chromium", "korvane unadopt ~/Applications/Files.app"},
            [](CLI::App& app, const Surroundings& surroundings) -> Action {
                const auto given = std::make_shared<std::string>();
                options::text(app, "APP", *given,
                              "The application, by any name that its program has, or its path")
                    ->required();
                return [given, &surroundings](const auto&) {
                    return unadoptApplication(*given, surroundings);
                };
            }};
}

} // namespace korvane
