#include "Manager/Operations/Deletion.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Manager/Desktop/Presence.h"
#include "Manager/Files/StagingFolder.h"
#include "Manager/Operations/Unchanged.h"
#include "Manager/Rules/BundlePlace.h"
#include "Manager/Rules/DataSafety.h"
#include "Manager/Rules/InstanceHome.h"
#include "Manager/Rules/InstanceLookup.h"
#include "Manager/Rules/Running.h"
#include "Manager/Rules/UnregisteredHomes.h"

#include <memory>

namespace korvane {

using ambrel::InstanceRecord;
using ambrel::Path;
using ambrel::UserData;
using ambrel::UserPlaces;
using Kind = Refusal::Kind;

namespace {

bool exists(const Path& path) { return ambrel::fileSystem::kindOf(path).has_value(); }

Path placeOf(const InstanceRecord& record) {
    return Path(ambrel::paths::withoutTrailingSlashes(record.bundleURL));
}

void requireDeletable(const InstanceRecord& record, UserData data, const UserPlaces& user) {
    // A link goes alone, and the instance runs on.
    if (!isLink(record.bundleURL)) requireNotRunning(record, user);
    if (data == UserData::keep) return;
    const Path folder{ambrel::paths::deletingLastComponent(record.bundleURL)};
    requireDeletableData(record, instancesWith(folder, user), user);
}

void requireAsPlanned(const DeletionPlan& plan, const UserPlaces& user) {
    requireUnchanged(plan.record, user);
    if (isLink(plan.record.bundleURL) != plan.isLink) throw placeChanged(plan.record.bundleURL);
    requireDeletable(plan.record, plan.data, user);
}

Refusal notRemoved(const Path& bundle, const ambrel::FileError& error) {
    return Refusal(Kind::notRemoved, bundle,
                   "Cannot delete " + ambrel::utf8::oneLine(bundle) + ". " + error.description());
}

/// A link to a bundle is no bundle: it goes by itself.
void removeLink(const Path& link) {
    try {
        ambrel::fileSystem::removeItem(link);
    } catch (const ambrel::FileError& error) {
        throw notRemoved(link, error);
    }
}

/// The folder into which the bundle goes in one step, so that it is never half there. Made before
/// anything is removed: where it cannot be made, the bundle could not go either.
std::unique_ptr<StagingFolder> folderAside(const Path& bundle) {
    try {
        return std::make_unique<StagingFolder>(Path(ambrel::paths::deletingLastComponent(bundle)));
    } catch (const ambrel::FileError& error) {
        throw notRemoved(bundle, error);
    }
}

/// The instance stays, and with it what the desktop knows of it.
void restoreEntry(const InstanceRecord& record, const UserPlaces& user) noexcept {
    try {
        registration::add(record, user);
    } catch (const std::exception&) {
        // That the bundle could not be removed is what is told.
    }
}

/// Takes the bundle off the desktop and then away, so that whoever deletes again after a kill in
/// between still finds it by its name.
std::vector<Notice> removeBundle(StagingFolder& staging, const InstanceRecord& record,
                                 const UserPlaces& user) {
    const auto bundle = placeOf(record);
    const auto entry = registration::findEntry(record, user);
    auto notices = presence::deleted(entry, user);
    try {
        ambrel::fileSystem::move(
            bundle, ambrel::paths::join(staging.path(), ambrel::paths::lastComponent(bundle)));
    } catch (const ambrel::FileError& error) {
        if (entry) restoreEntry(record, user);
        throw notRemoved(bundle, error);
    }
    auto remains = staging.removeOrTell("Its remains could not be removed and");
    if (remains) notices.push_back(std::move(*remains));
    return notices;
}

/// Before the bundle, which says where the data lies: with it there, deleting can be done again.
void removeData(const Path& home, Deleted& deleted) {
    if (!exists(home)) return;
    try {
        ambrel::fileSystem::removeTree(home);
    } catch (const ambrel::FileError& error) {
        if (exists(home)) {
            throw Refusal(Kind::dataRemains, home,
                          "Not all of its data in " + ambrel::utf8::oneLine(home) +
                              " could be deleted, and the instance stays. " + error.description());
        }
    }
    deleted.removedHome = home;
}

Deleted deleteInstance(const DeletionPlan& plan, const UserPlaces& user) {
    Deleted deleted{.record = plan.record, .keptHome = {}, .removedHome = {}, .notices = {}};
    const auto staging = folderAside(placeOf(plan.record));
    if (plan.home && plan.data == UserData::remove) {
        removeData(*plan.home, deleted);
        // Removing much takes its time, and what came to the bundle's place in it is not removed.
        requireUnchanged(plan.record, user);
    }
    // A home that stays is looked for by the list, and is shared with no other instance.
    if (!plan.home || !exists(*plan.home)) forgetHome(plan.record.config, user);
    deleted.notices = removeBundle(*staging, plan.record, user);
    unregisteredHomes::forget(plan.record, user);
    return deleted;
}

} // namespace

DeletionPlan planDeletion(const InstanceRecord& record, UserData data, const UserPlaces& user,
                          Measure measure) {
    requireDeletable(record, data, user);
    DeletionPlan plan{.record = record,
                      .data = data,
                      .isLink = isLink(record.bundleURL),
                      .bundleSize = {},
                      .home = usableHome(record.config, user),
                      .dataSize = {}};
    plan.hasData = plan.home && exists(*plan.home);
    if (measure == Measure::no) return plan;
    plan.bundleSize = sizeOfTree(record.bundleURL);
    if (plan.hasData && data == UserData::remove) plan.dataSize = sizeOfTree(*plan.home);
    return plan;
}

Deleted perform(const DeletionPlan& plan, const UserPlaces& user) {
    requireAsPlanned(plan, user);
    if (plan.isLink) {
        removeLink(placeOf(plan.record));
        return {.record = plan.record,
                .wasLink = true,
                .keptHome = {},
                .removedHome = {},
                .notices = {}};
    }
    auto deleted = deleteInstance(plan, user);
    const bool isKept = plan.home && plan.data == UserData::keep && exists(*plan.home);
    if (isKept) deleted.keptHome = plan.home;
    return deleted;
}

} // namespace korvane
