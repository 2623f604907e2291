#include "korvane/Verbs/ListVerbs.h"

#include "Ambrel/Instance/DesktopId.h"
#include "Ambrel/Instance/InstanceRegistry.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Desktop/Registration.h"
#include "Manager/Rules/InstanceLookup.h"
#include "Manager/Rules/UserText.h"
#include "korvane/CommandLine/Options.h"
#include "korvane/Output/JsonOutput.h"
#include "korvane/Output/Messages.h"
#include "korvane/Output/Table.h"

#include <ostream>

namespace korvane {

using ambrel::InstanceConfig;
using ambrel::InstanceRecord;
using ambrel::InstanceRegistry;
using ambrel::ShortcutKind;

namespace {

/// What the instance is about, in one word or path.
std::string subjectOf(const InstanceConfig& config) {
    switch (config.kind) {
    case ShortcutKind::app:
        return config.targetAppPath;
    case ShortcutKind::web:
        return config.url.value_or("");
    case ShortcutKind::file:
        return config.openPath.value_or("");
    case ShortcutKind::command:
        return config.commandPath.value_or("");
    }
    return {};
}

void writeTable(const std::vector<InstanceRecord>& records, const Surroundings& surroundings) {
    Table table;
    table.add({"NAME", "KIND", "OPENS", "BUNDLE"});
    for (const auto& record : records) {
        table.add({record.config.displayName, std::string(rawValue(record.config.kind)),
                   subjectOf(record.config), record.bundleURL});
    }
    table.write(surroundings.results);
}

void writeJson(const std::vector<InstanceRecord>& records, const Surroundings& surroundings) {
    auto array = nlohmann::json::array();
    for (const auto& record : records) array.push_back(json::instance(record, surroundings.user));
    json::write(array, surroundings.results);
}

int list(const std::vector<std::string>& folders, bool asJson, const Surroundings& surroundings) {
    const InstanceRegistry registry(surroundings.user, searchFolders(folders, surroundings.user));
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

void addRows(Table& table, const std::string& name, const std::vector<std::string>& values) {
    for (const auto& value : values) table.add({name, value});
}

std::vector<std::string> pairs(const ambrel::StringMap& map) {
    std::vector<std::string> lines;
    for (const auto& [key, value] : map) lines.push_back(key + "=" + value);
    return lines;
}

void addSwitches(Table& table, const InstanceConfig& config) {
    const std::pair<const char*, bool> switches[] = {
        {"shareUserFolders", config.shareUserFolders},
        {"registerAsBrowser", config.registerAsBrowser},
        {"openWithPassthrough", config.openWithPassthrough},
        {"menuBarIcon", config.menuBarIcon},
        {"menuBarIconTemplate", config.menuBarIconTemplate},
    };
    for (const auto& [name, value] : switches) table.add({name, value ? "true" : "false"});
}

void writeDetails(const InstanceRecord& record, const Surroundings& surroundings) {
    const auto& config = record.config;
    Table table;
    table.add({"displayName", config.displayName});
    table.add({"bundle", record.bundleURL});
    table.add({"bundleId", config.bundleId});
    table.add({"kind", std::string(rawValue(config.kind))});
    table.add({"opens", subjectOf(config)});
    addRows(table, "commandArgs", config.commandArgs);
    if (config.workingDirectory) table.add({"workingDirectory", *config.workingDirectory});
    table.add({"instanceHome", config.instanceHome});
    if (config.kind == ShortcutKind::app) {
        table.add({"strategy", std::string(rawValue(config.strategy))});
    }
    addRows(table, "extraArgs", config.extraArgs);
    addRows(table, "environment", pairs(config.environment));
    addRows(table, "infoPlistOverrides", pairs(config.infoPlistOverrides));
    addSwitches(table, config);
    if (const auto& label = config.iconLabel) {
        table.add({"iconLabel", label->text + " (" + label->colorHex + ", " +
                                    std::string(rawValue(label->position)) + ")"});
    }
    if (const auto icon = record.iconURL()) table.add({"icon", *icon});
    table.add({"desktopId", ambrel::desktopId(config.bundleId)});
    if (const auto entry = registration::findEntry(record, surroundings.user)) {
        table.add({"desktopEntry", entry->file});
    }
    table.write(surroundings.results);
}

} // namespace

std::optional<std::vector<std::string>> searchFolders(const std::vector<std::string>& given,
                                                      const ambrel::UserPlaces& user) {
    if (given.empty()) return std::nullopt;
    std::vector<std::string> folders;
    for (const auto& folder : given) folders.push_back(usablePath(folder, user));
    return folders;
}

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
                options::flag(app, "--json", given->asJson, "Write JSON");
                return [given, &surroundings](const auto&) {
                    return list(given->folders, given->asJson, surroundings);
                };
            }};
}

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
                options::text(app, "NAME", given->name, "The instance's name, or its bundle's path")
                    ->required();
                options::flag(app, "--json", given->asJson, "Write JSON");
                return [given, &surroundings](const auto&) {
                    const auto record = requireInstance(given->name, surroundings.user);
                    if (given->asJson) {
                        json::write(json::instance(record, surroundings.user),
                                    surroundings.results);
                    } else {
                        writeDetails(record, surroundings);
                    }
                    return 0;
                };
            }};
}

} // namespace korvane
