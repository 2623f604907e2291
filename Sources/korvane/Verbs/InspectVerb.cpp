#include "korvane/Verbs/InspectVerb.h"

#include "Manager/Operations/Inspection.h"
#include "Manager/Programs/ApplicationLookup.h"
#include "korvane/CommandLine/Options.h"
#include "korvane/Output/InstanceFacts.h"
#include "korvane/Output/JsonOutput.h"
#include "korvane/Output/Table.h"

#include <memory>
#include <ostream>

namespace korvane {

namespace {

void writeJson(const Inspection& found, const Surroundings& surroundings) {
    nlohmann::json object{
        {"bundle", json::text(found.app.url)},
        {"identifier", json::text(found.app.bundleId)},
        {"executable", json::text(found.app.executableURL())},
        {"sandboxed", found.app.sandboxed},
        {"oneCopyOnly", found.app.prohibitsMultipleInstances},
        {"engine", rawValue(found.engine.engine)},
        {"strategy", rawValue(found.strategy)},
        {"extraArgs", json::texts(found.arguments)},
        {"environment", found.environment},
        {"infoPlistOverrides", found.infoPlistOverrides},
    };
    if (!found.engine.proof.empty()) object["engineProof"] = json::text(found.engine.proof);
    for (const auto& fact : factsOf(found.bus)) object[fact.word] = json::text(fact.text);
    if (found.profile) object["profile"] = json::profile(*found.profile);
    json::write(object, surroundings.results);
}

void addMap(Table& table, const std::string& word, const ambrel::StringMap& map) {
    for (const auto& [name, value] : map) table.add({word, name + "=" + value});
}

void writeTable(const Inspection& found, const Surroundings& surroundings) {
    Table table;
    table.add({"bundle", found.app.url});
    table.add({"identifier", found.app.bundleId});
    table.add({"executable", found.app.executableURL()});
    table.add({"sandboxed", yesOrNo(found.app.sandboxed)});
    table.add({"oneCopyOnly", yesOrNo(found.app.prohibitsMultipleInstances)});
    table.add({"engine", std::string(rawValue(found.engine.engine))});
    if (!found.engine.proof.empty()) table.add({"engineProof", found.engine.proof});
    table.add({"strategy", std::string(rawValue(found.strategy))});
    for (const auto& argument : found.arguments) table.add({"extraArgs", argument});
    addMap(table, "environment", found.environment);
    addMap(table, "infoPlistOverrides", found.infoPlistOverrides);
    for (const auto& [word, text] : factsOf(found.bus)) table.add({word, text});
    if (found.profile) {
        const auto& profile = found.profile->profile;
        table.add({"profile",
                   found.profile->file + " (" + std::string(rawValue(profile.confidence)) + ")"});
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
                              "The application, by any name that its program has, or its path")
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
