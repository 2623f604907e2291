#include "Manager/Operations/Deletion.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Manager/Desktop/Presence.h"
#include "Manager/Files/StagingFolder.h"
#include "Manager/Operations/Unchanged.h"
#include "Manager/Rules/DataSafety.h"
#include "Manager/Rules/InstanceHome.h"
#include "Manager/Rules/InstanceLookup.h"
#include "Manager/Rules/Running.h"

#include <memory>

namespace korvane {

using ambrel::InstanceRecord;
using ambrel::Path;
using ambrel::UserData;
using ambrel::UserPlaces;
using Kind = Refusal::Kind;

namespace {

bool exists(const Path& path) { return ambrel::fileSystem::kindOf(path).has_value(); }

Path bundleOf(const InstanceRecord& record) {
    return Path(ambrel::paths::withoutTrailingSlashes(record.bundleURL));
}

bool isLink(const Path& path) {
    return ambrel::fileSystem::kindOf(path) == ambrel::fileSystem::ItemKind::symbolicLink;
}

void requireDeletable(const InstanceRecord& record, UserData data, const UserPlaces& user) {
    // A link goes alone, and the instance runs on.
    if (!isLink(bundleOf(record))) requireNotRunning(record, user);
    if (data == UserData::keep) return;
    const Path folder{ambrel::paths::deletingLastComponent(record.bundleURL)};
    requireDeletableData(record, instancesWith(folder, user), user);
}

void requireAsPlanned(const DeletionPlan& plan, const UserPlaces& user) {
    requireUnchanged(plan.record, user);
    if (isLink(bundleOf(plan.record)) != plan.isLink) {
        throw Refusal(Kind::changedMeanwhile, plan.record.bundleURL,
                      "What stands at " + ambrel::utf8::oneLine(plan.record.bundleURL) +
                          " has changed since it was looked at.",
                      Remedy::lookAgain);
    }
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

std::unique_ptr<StagingFolder> movedAside(const Path& bundle) {
    try {
        auto staging =
            std::make_unique<StagingFolder>(Path(ambrel::paths::deletingLastComponent(bundle)));
        ambrel::fileSystem::move(
            bundle, ambrel::paths::join(staging->path(), ambrel::paths::lastComponent(bundle)));
        return staging;
    } catch (const ambrel::FileError& error) {
        throw notRemoved(bundle, error);
    }
}

/// Moves the bundle aside in one step before anything in it is removed, so that a failure leaves
/// it whole.
std::vector<Notice> removeBundle(const InstanceRecord& record, const UserPlaces& user) {
    const auto entry = registration::findEntry(record, user);
    const auto staging = movedAside(bundleOf(record));
    const auto hidden = staging->path();
    auto notices = presence::deleted(entry, user);
    try {
        staging->remove();
    } catch (const ambrel::FileError& error) {
        notices.push_back({.kind = Notice::Kind::remainsLeft,
                           .subject = hidden,
                           .sentence = "Its remains could not be removed and lie in " +
                                       ambrel::utf8::oneLine(hidden) + ". " + error.description()});
    }
    return notices;
}

/// The data alone: what stands where the bundle was may be another one by now.
void removeData(const Path& home, Deleted& deleted) {
    if (!exists(home)) return;
    try {
        ambrel::fileSystem::removeTree(home);
    } catch (const ambrel::FileError&) {
        // Whether it is there still is what counts.
    }
    if (!exists(home)) {
        deleted.removedHome = home;
        return;
    }
    deleted.failure = Refusal(Kind::dataRemains, home,
                              "Its data could not be deleted and is still in " +
                                  ambrel::utf8::oneLine(home) + ".");
}

} // namespace

DeletionPlan planDeletion(const InstanceRecord& record, UserData data, const UserPlaces& user,
                          Measure measure) {
    requireDeletable(record, data, user);
    DeletionPlan plan{.record = record,
                      .data = data,
                      .isLink = isLink(bundleOf(record)),
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
    Deleted deleted{.record = plan.record,
                    .wasLink = plan.isLink,
                    .keptHome = {},
                    .removedHome = {},
                    .notices = {},
                    .failure = {}};
    if (plan.isLink) {
        removeLink(bundleOf(plan.record));
    } else {
        deleted.notices = removeBundle(plan.record, user);
        forgetHome(plan.record.config, user);
    }
    if (!plan.home) return deleted;
    if (plan.data == UserData::remove) {
        removeData(*plan.home, deleted);
    } else if (exists(*plan.home)) {
        deleted.keptHome = plan.home;
    }
    return deleted;
}

} // namespace korvane
