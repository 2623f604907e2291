#include "korvane/Verbs/MigrateVerb.h"

#include "Ambrel/Base/Utf8.h"
#include "Manager/Operations/Migration.h"
#include "Manager/Rules/InstanceLookup.h"
#include "korvane/CommandLine/Options.h"
#include "korvane/Output/JsonOutput.h"
#include "korvane/Output/Messages.h"

#include <memory>

namespace korvane {

namespace {

void tell(const Migrated& migrated, const Surroundings& surroundings) {
    std::size_t total = 0;
    for (const auto& folder : migrated.folders) {
        if (folder.items == 0) continue;
        total += folder.items;
        // What the user calls it.
        const auto own = ambrel::utf8::oneLine(ambrel::paths::lastComponent(folder.destination));
        say(surroundings, "Moved " + counted(folder.items, "item") + " to your " + own + ".");
    }
    if (total == 0) say(surroundings, "There was nothing to move.");
}

void writeJson(const ambrel::InstanceRecord& record, const Migrated& migrated,
               const Surroundings& surroundings) {
    auto counts = nlohmann::json::object();
    for (const auto& folder : migrated.folders) counts[folder.name] = folder.items;
    auto object = json::instance(record, surroundings.user);
    object["moved"] = counts;
    json::write(object, surroundings.results);
}

int migrate(const std::string& name, bool asJson, const Surroundings& surroundings) {
    const auto& user = surroundings.user;
    const auto record = requireInstance(name, user);
    const auto migrated = perform(planMigration(record, user, Measure::no), user);
    if (asJson) writeJson(record, migrated, surroundings);
    tell(migrated, surroundings);
    if (migrated.failure) throw Refusal(*migrated.failure);
    return 0;
}

} // namespace

Verb migrateVerb() {
    return {"migrate",
            "Move an instance's own Downloads, Documents and Desktop into yours.",
            {"korvane migrate Work", "korvane migrate Work --json"},
            [](CLI::App& app, const Surroundings& surroundings) -> Action {
                struct Given {
                    std::string name;
                    bool asJson = false;
                };
                const auto given = std::make_shared<Given>();
                options::instanceName(app, given->name);
                options::asJson(app, given->asJson);
                return [given, &surroundings](const auto&) {
                    return migrate(given->name, given->asJson, surroundings);
                };
            }};
}

} // namespace korvane
