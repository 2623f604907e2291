#include "korvane/Verbs/AppVerbs.h"

#include "Ambrel/Application/AppCatalog.h"
#include "Ambrel/Platform/Text.h"
#include "Ambrel/Wrapper/WrapperFactory.h"
#include "Manager/Programs/StartPlan.h"
#include "korvane/CommandLine/Options.h"
#include "korvane/Output/JsonOutput.h"
#include "korvane/Output/Messages.h"
#include "korvane/Output/Table.h"
#include "korvane/Verbs/ApplicationLookup.h"
#include "korvane/Verbs/SearchFolders.h"

#include <ostream>

namespace korvane {

using ambrel::AppBundle;
using ambrel::AppCatalog;
using ambrel::WrapperFactory;

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

int apps(const std::vector<std::string>& folders, bool asJson, const Surroundings& surroundings) {
    const auto found = scan(folders, surroundings);
    if (asJson) {
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
    table.write(surroundings.results);
    return 0;
}

struct Inspection {
    AppBundle app;
    WrapperFactory::EngineFinding engine;
    StartPlan plan; ///< for an instance of any desktop id
};

void writeJson(const Inspection& found, const Surroundings& surroundings) {
    nlohmann::json object{
        {"url", json::text(found.app.url)},
        {"bundleId", json::text(found.app.bundleId)},
        {"executableName", json::text(found.app.executableName)},
        {"executableURL", json::text(found.app.executableURL())},
        {"sandboxed", found.app.sandboxed},
        {"prohibitsMultipleInstances", found.app.prohibitsMultipleInstances},
        {"engine", rawValue(found.engine.engine)},
        {"arguments", found.plan.arguments},
        {"environment", found.plan.environment},
        {"profile", json::profile(found.plan.profile)},
        {"processName", nullptr},
    };
    if (found.plan.processName) object["processName"] = *found.plan.processName;
    if (!found.engine.proof.empty()) object["engineProof"] = json::text(found.engine.proof);
    json::write(object, surroundings.results);
}

void writeTable(const Inspection& found, const Surroundings& surroundings) {
    const auto yesOrNo = [](bool value) { return value ? "yes" : "no"; };
    Table table;
    table.add({"bundle", found.app.url});
    table.add({"identifier", found.app.bundleId});
    table.add({"executable", found.app.executableURL()});
    table.add({"sandboxed", yesOrNo(found.app.sandboxed)});
    table.add({"one copy only", yesOrNo(found.app.prohibitsMultipleInstances)});
    table.add({"engine", std::string(rawValue(found.engine.engine))});
    if (!found.engine.proof.empty()) table.add({"shown by", found.engine.proof});
    for (const auto& argument : found.plan.arguments) table.add({"argument", argument});
    for (const auto& [name, value] : found.plan.environment) {
        table.add({"environment", name + "=" + value});
    }
    if (found.plan.processName) table.add({"process name", *found.plan.processName});
    if (const auto& profile = found.plan.profile) {
        table.add({"profile", profile->file});
        table.add({"confidence", std::string(rawValue(profile->profile.confidence))});
    }
    table.write(surroundings.results);
}

/// The identifier is compared in small letters; as a proof it is shown as the bundle has it.
std::string shownProof(const WrapperFactory::EngineFinding& engine, const AppBundle& app) {
    return engine.proof == ambrel::text::lowercased(app.bundleId) ? app.bundleId : engine.proof;
}

int inspect(const std::string& name, bool asJson, UseProfile use,
            const Surroundings& surroundings) {
    const auto app = requireApplication(name, surroundings);
    auto engine = WrapperFactory::findEngine(app.url, app.bundleId);
    engine.proof = shownProof(engine, app);
    // No instance is looked at: the place of its desktop id is shown.
    const Inspection found{app, engine,
                           planStart(app, std::string(desktopIdPlaceholder), use, surroundings.user,
                                     surroundings.environment)};
    if (asJson) {
        writeJson(found, surroundings);
    } else {
        writeTable(found, surroundings);
    }
    return 0;
}

} // namespace

Verb appsVerb() {
    return {"apps",
            "List the applications that instances can be made of.",
            {"korvane apps", "korvane apps --in ~/Applications --json"},
            [](CLI::App& app, const Surroundings& surroundings) -> Action {
                struct Given {
                    std::vector<std::string> folders;
                    bool asJson = false;
                };
                const auto given = std::make_shared<Given>();
                options::texts(app, "--in", given->folders,
                               "Look in this folder instead of the usual ones")
                    ->type_name("DIR");
                options::flag(app, "--json", given->asJson, "Write JSON");
                return [given, &surroundings](const auto&) {
                    return apps(given->folders, given->asJson, surroundings);
                };
            }};
}

Verb inspectVerb() {
    return {"inspect",
            "Show what is known of an application.",
            {"korvane inspect \"Chromium Web Browser\"",
             "korvane inspect /Applications/Mail.app --json"},
            [](CLI::App& app, const Surroundings& surroundings) -> Action {
                struct Given {
                    std::string name;
                    bool asJson = false;
                    bool noProfile = false;
                };
                const auto given = std::make_shared<Given>();
                options::text(app, "APP", given->name,
                              "The bundle's path, or a name or identifier that \"korvane apps\" "
                              "lists")
                    ->required();
                options::flag(app, "--no-profile", given->noProfile,
                              "Without the profile and a name of their own for the windows");
                options::flag(app, "--json", given->asJson, "Write JSON");
                return [given, &surroundings](const auto&) {
                    return inspect(given->name, given->asJson,
                                   given->noProfile ? UseProfile::no : UseProfile::yes,
                                   surroundings);
                };
            }};
}

} // namespace korvane
