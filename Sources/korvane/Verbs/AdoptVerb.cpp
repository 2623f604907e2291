#include "korvane/Verbs/AdoptVerb.h"

#include "Ambrel/Base/Utf8.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Operations/Adopting.h"
#include "Manager/Rules/UserText.h"
#include "korvane/CommandLine/Options.h"
#include "korvane/Output/JsonOutput.h"
#include "korvane/Output/Messages.h"
#include "korvane/Output/Remedies.h"

#include <memory>
#include <ostream>

namespace korvane {

namespace {

struct AdoptOptions {
    std::string program;
    std::optional<std::string> into;
    bool asJson = false;
};

AdoptRequest requestFrom(const AdoptOptions& options, const Surroundings& surroundings) {
    AdoptRequest request{.program = options.program, .folder = {}};
    if (!options.into) return request;
    requireUtf8(*options.into, "--into");
    request.folder = usablePath(*options.into, surroundings.user);
    return request;
}

void tellAbout(const Adopted& adopted, const Surroundings& surroundings) {
    tell(surroundings, adopted.notices);
    if (adopted.existed) {
        say(surroundings, "The application " + inQuotes(adopted.name) + " stands at " +
                              ambrel::utf8::oneLine(adopted.bundle) + " already.");
    } else {
        say(surroundings, "Adopted " + ambrel::utf8::oneLine(adopted.program) + " as " +
                              inQuotes(adopted.name) + ".");
    }
    if (!adopted.hasIcon && !adopted.existed) {
        say(surroundings, "It has no icon: no picture was found for it that could be read.");
    }
    say(surroundings, "Make an instance of it with: korvane create app NAME " +
                          shellWord(referenceTo(adopted, surroundings.user)));
}

int adoptProgram(const AdoptOptions& options, const Surroundings& surroundings) {
    const auto adopted =
        adopt(requestFrom(options, surroundings), surroundings.user, surroundings.environment);
    tellAbout(adopted, surroundings);
    if (options.asJson) {
        json::write({{"name", json::text(adopted.name)},
                     {"bundle", json::text(adopted.bundle)},
                     {"program", json::text(adopted.program)}},
                    surroundings.results);
    } else {
        surroundings.results << adopted.bundle << '\n';
    }
    return 0;
}

} // namespace

Verb adoptVerb() {
    return {"adopt",
            "Make an application bundle out of an installed program.",
            {"korvane adopt chromium",
             "korvane adopt /usr/share/applications/firefox-esr.desktop --into ~/Applications",
             "korvane adopt /usr/bin/xterm"},
            [](CLI::App& app, const Surroundings& surroundings) -> Action {
                const auto given = std::make_shared<AdoptOptions>();
                auto* program = options::text(
                    app, "PROGRAM", given->program,
                    "Its name in the menu, a desktop id, a command, or the path of a desktop "
                    "entry or program");
                options::taking(app, program->required(), {Takes::installed});
                options::text(app, "--into", given->into,
                              "Where the bundle goes (default: ~/Applications)")
                    ->type_name("DIR");
                options::asJson(app, given->asJson);
                return [given, &surroundings](const auto&) {
                    return adoptProgram(*given, surroundings);
                };
            }};
}

} // namespace korvane
