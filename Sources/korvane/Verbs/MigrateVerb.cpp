#include "korvane/Verbs/MigrateVerb.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Home/FolderRelation.h"
#include "Ambrel/Home/UserFolders.h"
#include "Ambrel/Launch/InstanceLauncher.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Manager/Base/ManagerError.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Rules/InstanceLookup.h"
#include "korvane/CommandLine/Options.h"
#include "korvane/Output/JsonOutput.h"
#include "korvane/Output/Messages.h"

#include <ostream>

namespace korvane {

using ambrel::InstanceLauncher;
using ambrel::InstanceRecord;
using ambrel::Path;
namespace folders = ambrel::folders;

namespace {

Path requireMigratable(const InstanceRecord& record, const Surroundings& surroundings) {
    const auto name = inQuotes(record.config.displayName);
    const auto home = usableHome(record.config, surroundings.user);
    if (!home) throw Refusal("The instance " + name + " has no home folder.");
    if (folders::areSame(*home, surroundings.user.home)) {
        throw Refusal("The home of the instance " + name +
                      " is your own: there is nothing to move.");
    }
    if (!record.config.shareUserFolders) {
        throw Refusal("The instance " + name +
                      " keeps folders of its own. Let it share yours with: " +
                      commandLine("edit", {nameFor(record, surroundings.user)}) +
                      " --set shareUserFolders=true");
    }
    return *home;
}

/// What the user calls a shared folder.
std::string ownName(const std::optional<Path>& place, const std::string& name) {
    return place ? ambrel::utf8::oneLine(ambrel::paths::lastComponent(*place)) : name;
}

void tell(const Path& home, const std::map<std::string, int>& moved,
          const Surroundings& surroundings) {
    ambrel::UserFolders user(surroundings.user, home);
    std::size_t total = 0;
    for (const auto& [folder, count] : moved) {
        if (count == 0) continue;
        total += static_cast<std::size_t>(count);
        say(surroundings, "Moved " + counted(static_cast<std::size_t>(count), "item") +
                              " to your " + ownName(user.find(folder), folder) + ".");
    }
    if (total == 0) say(surroundings, "There was nothing to move.");
}

int migrate(const std::string& name, bool asJson, const Surroundings& surroundings) {
    const auto home = requireMigratable(requireInstance(name, surroundings.user), surroundings);
    // The library passes over what it cannot see; here that is a failure to be told.
    if (!ambrel::fileSystem::isMissing(home)) ambrel::fileSystem::list(home);
    const auto moved = InstanceLauncher::migrateSharedUserFolders(home, surroundings.user);
    if (asJson) json::write(moved, surroundings.results);
    tell(home, moved, surroundings);
    if (!InstanceLauncher::needsSharedFolderMigration(home, surroundings.user)) return 0;
    throw Refusal("Something could not be moved and stays in " + ambrel::utf8::oneLine(home) + ".");
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
                options::flag(app, "--json", given->asJson, "Write the number of moved items");
                return [given, &surroundings](const auto&) {
                    return migrate(given->name, given->asJson, surroundings);
                };
            }};
}

} // namespace korvane
