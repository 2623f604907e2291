#include "korvane/Verbs/AppsVerb.h"

#include "Ambrel/Application/AppCatalog.h"
#include "Manager/Programs/Adoption.h"
#include "korvane/CommandLine/Options.h"
#include "korvane/CommandLine/UsageError.h"
#include "korvane/Output/JsonOutput.h"
#include "korvane/Output/Messages.h"
#include "korvane/Output/Table.h"
#include "korvane/Verbs/SearchFolders.h"

#include <memory>
#include <ostream>

namespace korvane {

using ambrel::AppCatalog;

namespace {

std::vector<AppCatalog::InstalledApp> scan(const std::vector<std::string>& folders,
                                           const Surroundings& surroundings) {
    const auto places = searchFolders(folders, surroundings.user)
                            .value_or(AppCatalog::defaultSearchDirs(surroundings.user));
    if (!surroundings.messagesAreTerminal) return AppCatalog::scan(places);
    const auto apps = AppCatalog::scan(places, [&](std::size_t found) {
        surroundings.messages << "\rLooking for applications: " << found << std::flush;
    });
    // Back to the start of the line, and clear it.
    surroundings.messages << "\r\033[K" << std::flush;
    return apps;
}

struct AppsOptions {
    std::vector<std::string> folders;
    bool programs = false;
    bool asJson = false;
};

/// Those that menus have, under the words that "adopt" and "create app" find them by.
int listInstalled(bool asJson, const Surroundings& surroundings) {
    auto array = nlohmann::json::array();
    Table table;
    table.add({"NAME", "IDENTIFIER", "ENTRY"});
    for (const auto& program : listPrograms(surroundings.user, surroundings.environment)) {
        if (!program.isShown || !program.isUsable) continue;
        array.push_back({{"name", json::text(program.name)},
                         {"identifier", json::text(program.id)},
                         {"entry", json::text(program.file)}});
        table.add({program.name, program.id, program.file});
    }
    if (asJson) {
        json::write(array, surroundings.results);
    } else if (array.empty()) {
        say(surroundings, "No programs found.");
    } else {
        table.write(surroundings.results, surroundings.width);
    }
    return 0;
}

int apps(const AppsOptions& options, const Surroundings& surroundings) {
    if (options.programs && !options.folders.empty()) {
        throw UsageError("--in is for applications, not for --programs.");
    }
    if (options.programs) return listInstalled(options.asJson, surroundings);
    const auto found = scan(options.folders, surroundings);
    if (options.asJson) {
        auto array = nlohmann::json::array();
        for (const auto& app : found) array.push_back(json::app(app));
        json::write(array, surroundings.results);
        return 0;
    }
    if (found.empty()) {
        say(surroundings, "No applications found.");
        say(surroundings, "Make one of an installed program with: korvane adopt PROGRAM");
        return 0;
    }
    Table table;
    table.add({"NAME", "IDENTIFIER", "BUNDLE"});
    for (const auto& app : found) table.add({app.name, app.bundleId, app.url});
    table.write(surroundings.results, surroundings.width);
    return 0;
}

} // namespace

Verb appsVerb() {
    return {"apps",
            "List the applications that instances can be made of.",
            {"korvane apps", "korvane apps --in ~/Applications --json"},
            [](CLI::App& app, const Surroundings& surroundings) -> Action {
                const auto given = std::make_shared<AppsOptions>();
                options::texts(app, "--in", given->folders,
                               "Look in this folder instead of the usual ones")
                    ->type_name("DIR");
                if (adoptionIsOffered()) {
                    options::flag(app, "--programs", given->programs,
                                  "List the installed programs that can become applications");
                }
                options::asJson(app, given->asJson);
                return [given, &surroundings](const auto&) { return apps(*given, surroundings); };
            }};
}

} // namespace korvane
