#include "Manager/Operations/Repair.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Instance/BundleScan.h"
#include "Ambrel/Instance/DesktopId.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/Text.h"
#include "Ambrel/Wrapper/InfoPlist.h"
#include "Ambrel/Wrapper/RunnerLocator.h"
#include "Ambrel/Wrapper/WrapperFactory.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Base/Refusal.h"
#include "Manager/Desktop/KnownInstances.h"
#include "Manager/Operations/Unchanged.h"
#include "Manager/Rules/BundlePlace.h"
#include "Manager/Rules/HiddenIcon.h"

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
using registration::EntryCheck;
using Kind = Difference::Kind;
namespace fileSystem = ambrel::fileSystem;

namespace {

constexpr unsigned executableMode = 0755;
constexpr const char* iconKey = "CFBundleIconFile";

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

/// Info.plist as it should be, with what others have added to `existing`.
PropertyListDictionary infoWanted(const InstanceRecord& record,
                                  const PropertyListDictionary& existing) {
    std::optional<std::string> icon;
    if (record.iconURL()) icon = BundleLayout::iconName;
    auto wanted = ambrel::infoPlistFor(record.config, icon,
                                       isHidden(record) ? ambrel::WrapperIcon::hidden
                                                        : ambrel::WrapperIcon::shown);
    wanted.merge(PropertyListDictionary(existing));
    return wanted;
}

PropertyListDictionary infoIn(const Path& file) {
    return ambrel::readPropertyList(file).value_or(PropertyListDictionary());
}

/// Collects the differences of one instance.
class Inspector {
public:
    Inspector(const InstanceRecord& record, const RepairPlan& plan, const UserPlaces& user,
              const Environment& environment)
        : record_(record), plan_(plan), user_(user),
          environment_(environment), layout_{record.bundleURL},
          name_(inQuotes(record.config.displayName)) {}

    std::vector<Difference> differences() {
        checkRunner();
        checkInfoPlist();
        checkEntry();
        return std::move(found_);
    }

private:
    void add(Kind kind, const Path& subject, const std::string& sentence) {
        found_.push_back({kind, record_, subject, sentence, {}});
    }
    /// A sentence that ends in the subject.
    void addAt(Kind kind, const Path& subject, const std::string& sentence) {
        add(kind, subject, sentence + ": " + oneLine(subject));
    }

    void checkRunner() {
        const auto runner = layout_.runner();
        if (!fileSystem::exists(runner)) {
            addAt(Kind::runnerMissing, runner, name_ + " has no runner");
        } else if (!fileSystem::isExecutableFile(runner)) {
            addAt(Kind::runnerNotRunnable, runner, "The runner of " + name_ + " cannot be run");
        } else if (!isRunner(runner)) {
            addAt(Kind::runnerDiffers, runner,
                  "The runner of " + name_ + " is that of another version");
        }
    }

    bool isRunner(const Path& file) const {
        try {
            return fileSystem::read(file) == fileSystem::read(plan_.runner);
        } catch (const ambrel::FileError&) {
            return false; // it can be put in place where the other cannot be read
        }
    }

    void checkInfoPlist() {
        const auto file = layout_.infoPlist();
        const auto info = ambrel::readPropertyList(file);
        if (!info) {
            addAt(Kind::infoPlistMissing, file, name_ + " has no Info.plist that can be read");
            return;
        }
        iconIsMissing_ = info->count(iconKey) > 0 && !record_.iconURL();
        if (iconIsMissing_) {
            addAt(Kind::iconMissing, layout_.icon(),
                  "The icon of " + name_ + " is missing, and only creating it again draws it");
        }
        if (infoWanted(record_, *info) == *info) return;
        addAt(Kind::infoPlistDiffers, file,
              "The Info.plist of " + name_ + " does not say what its configuration says");
    }

    void checkEntry() {
        if (!registration::isOffered()) return;
        try {
            tell(registration::check(record_, user_));
        } catch (const Refusal& refusal) {
            add(Kind::entryImpossible, record_.bundleURL, refusal.sentence());
        }
    }

    void tell(const EntryCheck& check) {
        switch (check.state) {
        case EntryCheck::State::current:
            break;
        case EntryCheck::State::missing:
            tellMissing(check.subject);
            break;
        case EntryCheck::State::outdated:
            // What is left of a lost icon stays in the menu.
            if (iconIsMissing_) break;
            addAt(Kind::entryOutdated, check.subject,
                  "The desktop entry of " + name_ + ", or what belongs to it, is out of date");
            break;
        case EntryCheck::State::stray:
            add(Kind::entryStray, check.subject,
                "The desktop entry of " + name_ + " stands for " + oneLine(check.subject) +
                    ", and the instance is at " + oneLine(record_.bundleURL));
            break;
        case EntryCheck::State::taken:
            add(Kind::entryTaken, check.subject, check.reason);
            break;
        }
    }

    void tellMissing(const Path& file) {
        try {
            registration::requireFree(record_.config.bundleId, record_.bundleURL, user_,
                                      environment_, Remedy::none);
            addAt(Kind::entryMissing, file, name_ + " has no desktop entry");
        } catch (const Refusal& refusal) {
            add(Kind::entryTaken, refusal.subject, refusal.sentence());
        }
    }

    const InstanceRecord& record_;
    const RepairPlan& plan_;
    const UserPlaces& user_;
    const Environment& environment_;
    BundleLayout layout_;
    std::string name_;
    bool iconIsMissing_ = false;
    std::vector<Difference> found_;
};

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

void replaceInfoPlist(const InstanceRecord& record) {
    const auto file = BundleLayout{record.bundleURL}.infoPlist();
    fileSystem::replace(file, ambrel::xmlPropertyList(infoWanted(record, infoIn(file))));
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
            append(plan.differences, Inspector(record, plan, user, environment).differences());
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
