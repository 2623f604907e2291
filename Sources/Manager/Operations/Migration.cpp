#include "Manager/Operations/Migration.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Home/FolderRelation.h"
#include "Ambrel/Home/SharedUserFolders.h"
#include "Ambrel/Home/UserFolders.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Operations/Unchanged.h"
#include "Manager/Rules/InstanceLookup.h"
#include "Manager/Rules/Running.h"

namespace korvane {

using ambrel::InstanceRecord;
using ambrel::Path;
using ambrel::SharedUserFolders;
using ambrel::UserPlaces;
using Kind = Refusal::Kind;

namespace {

Path requireMigratable(const InstanceRecord& record, const UserPlaces& user) {
    const auto name = inQuotes(record.config.displayName);
    const auto home = usableHome(record.config, user);
    if (!home) {
        throw Refusal(Kind::homeIsMissing, record.config.instanceHome,
                      "The instance " + name + " has no home folder.");
    }
    if (ambrel::folders::areSame(*home, user.home)) {
        throw Refusal(Kind::homeIsUsers, *home,
                      "The home of the instance " + name +
                          " is your own: there is nothing to move.");
    }
    if (!record.config.shareUserFolders) {
        throw Refusal(Kind::foldersNotShared, nameFor(record, user),
                      "The instance " + name + " keeps folders of its own.", Remedy::shareFolders);
    }
    requireNotRunning(record, user);
    return *home;
}

std::vector<PrivateFolder> privateFolders(const Path& home, const UserPlaces& user) {
    std::vector<PrivateFolder> found;
    ambrel::UserFolders own(user, home);
    for (const auto shared : SharedUserFolders::names) {
        const auto place = ambrel::paths::join(home, shared);
        if (ambrel::fileSystem::kindOf(place) != ambrel::fileSystem::ItemKind::folder) continue;
        const auto destination = own.find(shared);
        if (!destination) continue;
        found.push_back({std::string(shared), place, *destination, {}});
    }
    return found;
}

/// What is in the folders may change at any time; where it goes may not.
void requireSameDestinations(const MigrationPlan& plan, const UserPlaces& user) {
    ambrel::UserFolders own(user, plan.home);
    for (const auto& folder : plan.folders) {
        if (own.find(folder.name) == folder.destination) continue;
        throw Refusal(Kind::changedMeanwhile, folder.destination,
                      "The place of your " + folder.name + " has changed since it was looked at.",
                      Remedy::lookAgain);
    }
}

} // namespace

MigrationPlan planMigration(const InstanceRecord& record, const UserPlaces& user, Measure measure) {
    const auto home = requireMigratable(record, user);
    // The library passes over what it cannot see; here that is a failure to be told.
    if (!ambrel::fileSystem::isMissing(home)) ambrel::fileSystem::list(home);
    MigrationPlan plan{.record = record, .home = home, .folders = privateFolders(home, user)};
    if (measure == Measure::no) return plan;
    for (auto& folder : plan.folders) folder.size = sizeOfTree(folder.place);
    return plan;
}

Migrated perform(const MigrationPlan& plan, const UserPlaces& user) {
    requireUnchanged(plan.record, user);
    const auto home = requireMigratable(plan.record, user);
    requireSameDestinations(plan, user);
    Migrated migrated{.record = plan.record, .folders = {}, .failure = {}};
    ambrel::UserFolders own(user, home);
    std::string reason;
    const auto obstacle = [&reason](const std::string& sentence) {
        if (reason.empty()) reason = " " + sentence;
    };
    for (const auto& [name, count] : SharedUserFolders::migrate(home, user, obstacle)) {
        migrated.folders.push_back(
            {name, own.find(name).value_or(name), static_cast<std::size_t>(count)});
    }
    if (SharedUserFolders::needsMigration(home, user)) {
        migrated.failure = Refusal(Kind::notAllMoved, home,
                                   "Something could not be moved and stays in " +
                                       ambrel::utf8::oneLine(home) + "." + reason);
    }
    return migrated;
}

} // namespace korvane
