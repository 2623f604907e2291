#include "korvane/Verbs/ListVerb.h"

#include "Ambrel/Instance/InstanceRegistry.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Rules/MissingTarget.h"
#include "Manager/Rules/Running.h"
#include "korvane/CommandLine/Options.h"
#include "korvane/Output/ConfigText.h"
#include "korvane/Output/JsonOutput.h"
#include "korvane/Output/Messages.h"
#include "korvane/Output/Table.h"
#include "korvane/Verbs/SearchFolders.h"

#include <ostream>

namespace korvane {

using ambrel::InstanceRecord;
using ambrel::InstanceRegistry;

namespace {

std::string goneWord(ambrel::ShortcutKind kind) {
    if (kind == ambrel::ShortcutKind::app) return "application is gone";
    return kind == ambrel::ShortcutKind::file ? "document is gone" : "command is gone";
}

/// Nothing where everything is as usual.
std::string stateOf(const InstanceRecord& record, const Running& running,
                    const ambrel::UserPlaces& user) {
    std::string state = running.of(record).none() ? "" : "running";
    if (!missingTarget(record, user)) return state;
    return state + (state.empty() ? "" : ", ") + goneWord(record.config.kind);
}

void writeTable(const std::vector<InstanceRecord>& records, const Surroundings& surroundings) {
    const auto running = Running::now(surroundings.user);
    Table table;
    table.add({"NAME", "KIND", "STATE", "OPENS", "BUNDLE"});
    for (const auto& record : records) {
        table.add({record.config.displayName, std::string(rawValue(record.config.kind)),
                   stateOf(record, running, surroundings.user), configText::subject(record.config),
                   record.bundleURL});
    }
    table.write(surroundings.results, surroundings.width);
}

void writeJson(const std::vector<InstanceRecord>& records, const Surroundings& surroundings) {
    auto array = nlohmann::json::array();
    const auto running = Running::now(surroundings.user);
    for (const auto& record : records) {
        array.push_back(json::instance(record, surroundings.user, running));
    }
    json::write(array, surroundings.results);
}

/// The registry passes over what it cannot look into; "no instances" would be untrue then.
void requireListable(const ambrel::Path& folder) {
    if (!ambrel::fileSystem::isMissing(folder)) ambrel::fileSystem::list(folder);
}

int list(const std::vector<std::string>& folders, bool asJson, const Surroundings& surroundings) {
    const InstanceRegistry registry(surroundings.user, searchFolders(folders, surroundings.user));
    for (const auto& folder : registry.searchDirs) requireListable(folder);
    const auto records = registry.list();
    if (asJson) {
        writeJson(records, surroundings);
    } else if (!records.empty()) {
        writeTable(records, surroundings);
    } else {
        std::string places;
        for (const auto& folder : registry.searchDirs) places += " " + shellWord(folder);
        say(surroundings, "No instances in" + places + ".");
        say(surroundings, "Make one with: korvane create app NAME APP");
    }
    return 0;
}

} // namespace

Verb listVerb() {
    return {"list",
            "List the instances.",
            {"korvane list", "korvane list --in ~/Applications --in /opt/instances",
             "korvane list --json"},
            [](CLI::App& app, const Surroundings& surroundings) -> Action {
                struct Given {
                    std::vector<std::string> folders;
                    bool asJson = false;
                };
                const auto given = std::make_shared<Given>();
                options::texts(app, "--in", given->folders,
                               "Look in this folder instead of ~/Applications")
                    ->type_name("DIR");
                options::asJson(app, given->asJson);
                return [given, &surroundings](const auto&) {
                    return list(given->folders, given->asJson, surroundings);
                };
            }};
}

} // namespace korvane
