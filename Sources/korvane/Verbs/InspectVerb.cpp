#include "korvane/Verbs/InspectVerb.h"

#include "Manager/Operations/Inspection.h"
#include "Manager/Programs/ApplicationLookup.h"
#include "korvane/CommandLine/Options.h"
#include "korvane/Output/JsonOutput.h"
#include "korvane/Output/Table.h"

#include <memory>
#include <ostream>

namespace korvane {

namespace {

void writeJson(const Inspection& found, const Surroundings& surroundings) {
    nlohmann::json object{
        {"url", json::text(found.app.url)},
        {"bundleId", json::text(found.app.bundleId)},
        {"executableName", json::text(found.app.executableName)},
        {"executableURL", json::text(found.app.executableURL())},
        {"sandboxed", found.app.sandboxed},
        {"prohibitsMultipleInstances", found.app.prohibitsMultipleInstances},
        {"engine", rawValue(found.engine.engine)},
        {"arguments", found.start.arguments},
        {"environment", found.start.environment},
        {"profile", json::profile(found.start.profile)},
        {"processName", nullptr},
    };
    if (found.start.processName) object["processName"] = *found.start.processName;
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
    for (const auto& argument : found.start.arguments) table.add({"argument", argument});
    for (const auto& [name, value] : found.start.environment) {
        table.add({"environment", name + "=" + value});
    }
    if (found.start.processName) table.add({"process name", *found.start.processName});
    if (const auto& profile = found.start.profile) {
        table.add({"profile", profile->file});
        table.add({"confidence", std::string(rawValue(profile->profile.confidence))});
    }
    table.write(surroundings.results);
}

int inspectApplication(const std::string& name, bool asJson, UseProfile use,
                       const Surroundings& surroundings) {
    const auto& user = surroundings.user;
    const auto app = requireApplication(name, user, surroundings.environment);
    const auto found = inspect(app, use, user, surroundings.environment);
    if (asJson) {
        writeJson(found, surroundings);
    } else {
        writeTable(found, surroundings);
    }
    return 0;
}

} // namespace

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
                options::asJson(app, given->asJson);
                return [given, &surroundings](const auto&) {
                    return inspectApplication(given->name, given->asJson,
                                              given->noProfile ? UseProfile::no : UseProfile::yes,
                                              surroundings);
                };
            }};
}

} // namespace korvane
