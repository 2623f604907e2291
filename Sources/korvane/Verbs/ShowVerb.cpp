#include "korvane/Verbs/ShowVerb.h"

#include "Ambrel/Instance/InstanceRegistry.h"
#include "Manager/Rules/InstanceLookup.h"
#include "Manager/Rules/MissingTarget.h"
#include "Manager/Rules/Running.h"
#include "korvane/CommandLine/Options.h"
#include "korvane/Output/ConfigText.h"
#include "korvane/Output/InstanceFacts.h"
#include "korvane/Output/JsonOutput.h"
#include "korvane/Output/Table.h"

#include <ostream>

namespace korvane {

using ambrel::ConfigPart;
using ambrel::InstanceRecord;

namespace {

void addPart(Table& table, const InstanceRecord& record, ConfigPart part) {
    for (const auto& [key, text] : configText::rows(record.config, part)) table.add({key, text});
}

void addState(Table& table, const InstanceRecord& record, const ambrel::UserPlaces& user) {
    const auto running = Running::now(user).of(record);
    std::string cell = running.none() ? "false" : "true";
    if (!running.none()) cell += ": " + spokenProcesses(running.ids, running.programs);
    table.add({"running", cell});
    if (const auto missing = missingTarget(record, user)) table.add({"missing", *missing});
}

void writeDetails(const InstanceRecord& record, const Surroundings& surroundings) {
    Table table;
    for (const auto& [word, text] : factsOf(record, surroundings.user)) table.add({word, text});
    addState(table, record, surroundings.user);
    for (const auto part : {ConfigPart::command, ConfigPart::start, ConfigPart::sharing,
                            ConfigPart::desktop, ConfigPart::look}) {
        addPart(table, record, part);
    }
    table.write(surroundings.results);
}

} // namespace

Verb showVerb() {
    return {"show",
            "Show one instance.",
            {"korvane show Work", "korvane show ~/Applications/Work.app --json"},
            [](CLI::App& app, const Surroundings& surroundings) -> Action {
                struct Given {
                    std::string name;
                    bool asJson = false;
                };
                const auto given = std::make_shared<Given>();
                options::instanceName(app, given->name);
                options::asJson(app, given->asJson);
                return [given, &surroundings](const auto&) {
                    const auto record = requireInstance(given->name, surroundings.user);
                    if (given->asJson) {
                        json::write(json::instance(record, surroundings.user,
                                                   Running::now(surroundings.user)),
                                    surroundings.results);
                    } else {
                        writeDetails(record, surroundings);
                    }
                    return 0;
                };
            }};
}

} // namespace korvane
