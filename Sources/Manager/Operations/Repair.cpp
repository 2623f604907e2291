#include "Manager/Operations/Repair.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Instance/BundleScan.h"
#include "Ambrel/Instance/DesktopId.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/Text.h"
#include "Ambrel/Wrapper/RunnerLocator.h"
#include "Ambrel/Wrapper/WrapperFactory.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Base/Refusal.h"
#include "Manager/Desktop/KnownInstances.h"
#include "Manager/Files/StagingFolder.h"
#include "Manager/Operations/InstanceDifferences.h"
#include "Manager/Operations/Unchanged.h"
#include "Manager/Rules/BundlePlace.h"

#include <algorithm>

namespace korvane {

using ambrel::BundleLayout;
using ambrel::Environment;
using ambrel::InstanceRecord;
using ambrel::InstanceRegistry;
using ambrel::Path;
using ambrel::PropertyListDictionary;
using ambrel::UserPlaces;
using ambrel::utf8::oneLine;
using registration::Entry;
using Kind = Difference::Kind;
namespace fileSystem = ambrel::fileSystem;

namespace {

constexpr unsigned executableMode = 0755;

Path requireRunner(const std::optional<Path>& chosen) {
    const auto runner = chosen ? chosen
                               : ambrel::RunnerLocator::locate(ambrel::MainBundle::current(),
                                                               ambrel::SystemFileManager());
    if (runner && fileSystem::isExecutableFile(*runner)) return *runner;
    const auto reason = chosen
                            ? "There is no runner that can be run at " + oneLine(*chosen) + "."
                            : ambrel::WrapperFactory::FactoryError::runnerNotFound().description();
    throw Refusal(Refusal::Kind::unusableRunner, chosen.value_or(""), reason, Remedy::chooseRunner);
}

bool sharesIdentifier(const InstanceRecord& left, const InstanceRecord& right) {
    const auto& one = left.config.bundleId;
    const auto& other = right.config.bundleId;
    return ambrel::text::lowercased(one) == ambrel::text::lowercased(other) ||
           ambrel::desktopId(one) == ambrel::desktopId(other);
}

/// All that is known of instances and entries at one moment.
struct KnownThings {
    std::vector<InstanceRecord> instances; ///< each once
    std::vector<Entry> entries;

    const InstanceRecord* otherWithIdentifierOf(const InstanceRecord& record) const {
        const auto found = std::ranges::find_if(instances, [&](const InstanceRecord& other) {
            return sharesIdentifier(other, record) &&
                   !isSameBundle(other.bundleURL, record.bundleURL);
        });
        return found == instances.end() ? nullptr : &*found;
    }
    /// Whether some instance goes by the entry's id: it then is its own, or becomes it.
    bool isClaimed(const Entry& entry) const {
        return std::ranges::any_of(instances, [&](const InstanceRecord& record) {
            return ambrel::desktopId(record.config.bundleId) == entry.id;
        });
    }
};

KnownThings allKnown(const std::optional<InstanceRecord>& only, const UserPlaces& user) {
    auto elsewhere = findElsewhere(user);
    std::vector<InstanceRecord> first;
    if (only) first.push_back(*only);
    return {.instances = knownInstances(elsewhere, user, first),
            .entries = std::move(elsewhere.entries)};
}

Difference sharedIdentifier(const InstanceRecord& record, const InstanceRecord& other) {
    return {Kind::identifierShared,
            record,
            other.bundleURL,
            inQuotes(record.config.displayName) + " at " + oneLine(record.bundleURL) +
                " has the identifier of the instance at " + oneLine(other.bundleURL) +
                ": it is left as it is until one of them is deleted",
            {}};
}

/// What is wrong with `entry`, by whose id no instance goes.
Difference differenceOf(const Entry& entry, const UserPlaces& user) {
    const auto subject = "The desktop entry " + oneLine(entry.file) + " stands for ";
    const auto bundle = oneLine(entry.bundle);
    if (fileSystem::isMissing(entry.bundle)) {
        return {Kind::entryOrphaned, {}, entry.file, subject + bundle + ", which is gone", entry};
    }
    const auto record = InstanceRegistry(user).recordFor(entry.bundle);
    if (!record) {
        const auto sentence = subject + bundle + ", which is no readable instance";
        return {Kind::bundleUnreadable, {}, entry.bundle, sentence, {}};
    }
    const auto name = inQuotes(record->config.displayName);
    return {Kind::entryFormer, record, entry.file,
            subject + name + " under another identifier than it has", entry};
}

/// Whether nothing has taken the entry's id up again.
bool isAsPlanned(const Difference& difference, const UserPlaces& user) {
    const auto& entry = *difference.entry;
    const auto record = InstanceRegistry(user).recordFor(entry.bundle);
    const bool isOwn = record && ambrel::desktopId(record->config.bundleId) == entry.id;
    return !isOwn && differenceOf(entry, user).kind == difference.kind;
}

void removeEntry(const Difference& difference, const UserPlaces& user) {
    const auto& entry = *difference.entry;
    if (!isAsPlanned(difference, user)) throw placeChanged(entry.bundle);
    registration::remove(entry, user);
}

/// Bundles in the default folder that are instances but for what their configuration holds.
std::vector<Difference> unreadableBundles(const UserPlaces& user) {
    std::vector<Difference> found;
    for (const auto& bundle : ambrel::bundlesIn(ambrel::defaultInstanceFolders(user))) {
        const auto file = BundleLayout{bundle}.instanceJson();
        if (!fileSystem::exists(file) || ambrel::configIn(bundle)) continue;
        found.push_back({Kind::bundleUnreadable,
                         {},
                         bundle,
                         "The configuration of an instance cannot be read: " + oneLine(file),
                         {}});
    }
    return found;
}

void append(std::vector<Difference>& differences, std::vector<Difference> more) {
    for (auto& difference : more) differences.push_back(std::move(difference));
}

bool isAmong(const std::vector<Difference>& differences, const Path& bundle) {
    return std::ranges::any_of(differences, [&](const Difference& difference) {
        return difference.kind == Kind::bundleUnreadable &&
               isSameBundle(difference.subject, bundle);
    });
}

void replaceRunner(const Path& file, const std::string& bytes) {
    fileSystem::createFolders(Path(ambrel::paths::deletingLastComponent(file)));
    fileSystem::replace(file, bytes, executableMode);
}

PropertyListDictionary infoIn(const Path& file) {
    return ambrel::readPropertyList(file).value_or(PropertyListDictionary());
}

void replaceInfoPlist(const InstanceRecord& record) {
    const auto file = BundleLayout{record.bundleURL}.infoPlist();
    fileSystem::replace(file, ambrel::xmlPropertyList(infoPlistWanted(record, infoIn(file))));
}

void mend(const Difference& difference, const std::string& runner, const UserPlaces& user) {
    if (difference.entry) {
        removeEntry(difference, user);
        return;
    }
    const auto& record = difference.record.value();
    requireUnchanged(record, user);
    switch (difference.kind) {
    case Kind::runnerMissing:
    case Kind::runnerNotRunnable:
    case Kind::runnerDiffers:
        replaceRunner(difference.subject, runner);
        break;
    case Kind::infoPlistMissing:
    case Kind::infoPlistDiffers:
        replaceInfoPlist(record);
        break;
    default:
        registration::mend(record, user);
        break;
    }
}

} // namespace

RepairPlan planRepair(const std::optional<InstanceRecord>& only, const std::optional<Path>& runner,
                      const UserPlaces& user, const Environment& environment) {
    RepairPlan plan{.runner = requireRunner(runner), .differences = {}};
    const auto known = allKnown(only, user);
    if (!only) plan.differences = unreadableBundles(user);
    for (const auto& record : known.instances) {
        if (only && !isSameBundle(record.bundleURL, only->bundleURL)) continue;
        if (const auto* other = known.otherWithIdentifierOf(record)) {
            plan.differences.push_back(sharedIdentifier(record, *other));
        } else {
            append(plan.differences, differencesOf(record, plan.runner, user, environment));
        }
    }
    for (const auto& entry : known.entries) {
        if (known.isClaimed(entry) || isAmong(plan.differences, entry.bundle)) continue;
        if (only && !isSameBundle(entry.bundle, only->bundleURL)) continue;
        plan.differences.push_back(differenceOf(entry, user));
    }
    return plan;
}

Repaired perform(const RepairPlan& plan, const UserPlaces& user) {
    Repaired repaired;
    const auto runner = fileSystem::read(plan.runner);
    for (const auto& folder : InstanceRegistry::defaultSearchDirs(user)) {
        StagingFolder::removeAbandonedIn(folder);
    }
    for (const auto& difference : plan.differences) {
        if (!difference.isMendable()) continue;
        try {
            mend(difference, runner, user);
            repaired.mended.push_back(difference);
        } catch (const std::exception& error) {
            repaired.failures.push_back({difference, error.what()});
        }
    }
    return repaired;
}

} // namespace korvane
