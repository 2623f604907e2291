#include "Manager/Operations/Editing.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Instance/ConfigFields.h"
#include "Ambrel/Platform/FileError.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/PropertyList.h"
#include "Ambrel/Wrapper/WrapperGenerator.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Base/Refusal.h"
#include "Manager/Desktop/Presence.h"
#include "Manager/Operations/CreationNotices.h"
#include "Manager/Operations/IconOrigin.h"
#include "Manager/Operations/Rebuilding.h"
#include "Manager/Operations/Unchanged.h"
#include "Manager/Operations/WorkedOut.h"
#include "Manager/Rules/BundlePlace.h"
#include "Manager/Rules/DataSafety.h"
#include "Manager/Rules/FieldEffect.h"
#include "Manager/Rules/InfoPlistKeys.h"
#include "Manager/Rules/InstanceHome.h"
#include "Manager/Rules/InstanceLookup.h"
#include "Manager/Rules/Running.h"
#include "Manager/Rules/SiteAddress.h"
#include "Manager/Rules/UserText.h"

#include <algorithm>

namespace korvane {

using ambrel::Environment;
using ambrel::InstanceConfig;
using ambrel::InstanceRecord;
using ambrel::Path;
using ambrel::UserPlaces;
using Kind = Refusal::Kind;

namespace {

constexpr const char* editedKeys[] = {ambrel::processNameKey, windowClassKey, ambrel::sharedBusKey,
                                      ambrel::hidesSecretsKey, ambrel::busNamesKey};

/// Without the overrides that an edit writes into Info.plist; the others only creating the instance
/// again does.
InstanceConfig withoutEditedKeys(InstanceConfig config) {
    for (const auto* key : editedKeys) config.infoPlistOverrides.erase(key);
    return config;
}

void requireSameBundle(const InstanceConfig& stored, const InstanceConfig& asked) {
    const auto config = withoutEditedKeys(stored);
    const auto wanted = withoutEditedKeys(asked);
    ambrel::forEachField([&](const auto& field) {
        if (field.edit.form != ambrel::FieldEdit::Form::byCreatingAgain) return;
        if (field.part == ambrel::ConfigPart::name) return; // for which all is built anew
        if (config.*field.member == wanted.*field.member) return;
        throw Refusal(Kind::fieldIsBundles, field.key, whyNotEdited(field.key),
                      Remedy::createAgain);
    });
}

/// What would be stored and never heeded is refused; what is stored so can be taken out.
void requireHeededChanges(const InstanceConfig& config, const InstanceConfig& wanted) {
    static const InstanceConfig defaults;
    ambrel::forEachField([&](const auto& field) {
        const auto& value = wanted.*field.member;
        if (value == config.*field.member || value == defaults.*field.member) return;
        requireHeeded(field.key, field.key, config.kind);
    });
}

/// Whether its profile says so is not asked.
BusStanding standingOf(const InstanceConfig& config) {
    return busStanding(config.infoPlistOverrides, config.environment, {});
}

/// Whether the change takes its own names from an application that had them.
bool losesOwnNames(const InstanceConfig& before, const InstanceConfig& after) {
    return after.kind == ambrel::ShortcutKind::app && standingOf(before).hasOwnNames() &&
           !standingOf(after).hasOwnNames();
}

/// An instance whose program only the bus starts keeps its own names, if it has them.
void requireStillApart(const InstanceConfig& config, const InstanceConfig& wanted) {
    if (!losesOwnNames(config, wanted)) return;
    const auto app = ambrel::AppBundle::read(wanted.targetAppURL());
    if (app) requireOwnNames(*app, standingOf(wanted));
}

/// What is said of the session's bus by the wanted overrides, where they say something new.
void requireNewBusSettings(const InstanceConfig& config, const InstanceConfig& wanted) {
    const auto isNew = [&](const char* key) {
        const auto found = wanted.infoPlistOverrides.find(key);
        if (found == wanted.infoPlistOverrides.end()) return false;
        const auto had = config.infoPlistOverrides.find(key);
        return had == config.infoPlistOverrides.end() || had->second != found->second;
    };
    const std::pair<const char*, const char*> settings[] = {
        {ambrel::sharedBusKey, "sharedBus"},
        {ambrel::hidesSecretsKey, "hideSecrets"},
        {ambrel::busNamesKey, ambrel::busNamesKey}};
    for (const auto& [key, name] : settings) {
        if (!isNew(key)) continue;
        requireBusHeeded(name, config.kind);
        requireBusSettings(wanted.infoPlistOverrides);
    }
    requireStillApart(config, wanted);
    if (isNew(ambrel::hidesSecretsKey)) requireSecretsHideable(standingOf(wanted));
}

void requireNewAddress(const InstanceConfig& config, const InstanceConfig& wanted) {
    if (wanted.url && wanted.url != config.url) requireSiteAddress(*wanted.url);
}

void requireUsableHome(const InstanceRecord& record, const InstanceConfig& wanted,
                       const UserPlaces& user) {
    if (wanted.instanceHome == record.config.instanceHome) return;
    if (!usableHome(wanted, user)) {
        throw Refusal(Kind::unknownUser, wanted.instanceHome,
                      "The home " + inQuotes(wanted.instanceHome) + " names an unknown user.");
    }
    const Path folder{ambrel::paths::deletingLastComponent(record.bundleURL)};
    requireOwnHome(wanted, record.bundleURL, instancesWith(folder, user), user, Remedy::changeHome);
    requireNoUserFolder(wanted, user, Remedy::changeHome);
}

void requireRenamable(const InstanceRecord& record, const UserPlaces& user) {
    const Path bundle{ambrel::paths::withoutTrailingSlashes(record.bundleURL)};
    if (isLink(bundle)) {
        throw Refusal(Kind::bundleIsLink, bundle,
                      ambrel::utf8::oneLine(bundle) +
                          " is a link, which would lead nowhere then: rename what it leads to.");
    }
    requireNotRunning(record, user); // its processes are told by where the bundle stands
}

/// In one step: whoever reads it meanwhile finds the one configuration or the other, and so does
/// the next command when this one is killed.
void writeConfig(const InstanceRecord& record, const InstanceConfig& wanted) {
    const auto file = ambrel::BundleLayout{record.bundleURL}.instanceJson();
    const auto meant = wanted.encode();
    try {
        ambrel::fileSystem::openForAppending(file); // one that is write-protected stays as it is
        ambrel::fileSystem::replace(file, meant);
    } catch (const ambrel::FileError& error) {
        throw Refusal(Kind::notWritten, file,
                      "The change could not be written to " + ambrel::utf8::oneLine(file) +
                          "; nothing was changed. " + error.description());
    }
}

/// Info.plist with what the configuration says of names.
std::string infoPlistWith(const InstanceConfig& config, const Path& file) {
    auto info = ambrel::readPropertyList(file);
    if (!info) {
        throw Refusal(Kind::damagedInstance, file,
                      "The bundle is damaged: " + ambrel::utf8::oneLine(file) + " cannot be read.");
    }
    for (const auto* key : editedKeys) {
        const auto name = config.infoPlistOverrides.find(key);
        info->erase(key);
        if (name == config.infoPlistOverrides.end()) continue;
        info->emplace(key, ambrel::WrapperGenerator::coercePlistValue(name->second));
    }
    return ambrel::xmlPropertyList(*info);
}

/// The first failure is the one to tell.
void putBack(const Path& file, const std::string& bytes) noexcept {
    try {
        ambrel::fileSystem::replace(file, bytes);
    } catch (const std::exception&) {
        // The configuration decides what is started; Info.plist only tells of it.
    }
}

/// The overrides stand in Info.plist too, which is exchanged first and put back after a failure.
void writeWithInfoPlist(const InstanceRecord& record, const InstanceConfig& wanted) {
    if (wanted.infoPlistOverrides == record.config.infoPlistOverrides) {
        writeConfig(record, wanted);
        return;
    }
    const auto file = ambrel::BundleLayout{record.bundleURL}.infoPlist();
    const auto before = ambrel::fileSystem::read(file);
    ambrel::fileSystem::replace(file, infoPlistWith(wanted, file));
    try {
        writeConfig(record, wanted);
    } catch (...) {
        putBack(file, before);
        throw;
    }
}

Notice separationDropped(const std::string& what, const std::string& name, Remedy remedy) {
    return {.kind = Notice::Kind::separationDropped,
            .subject = name,
            .sentence =
                "It is no longer started with what was worked out to keep it apart: " + what + ".",
            .remedy = remedy};
}

/// What keeps an instance apart does not go without a word.
void addDropped(const InstanceConfig& before, const InstanceConfig& after, const WorkedOut& worked,
                const std::string& name, std::vector<Notice>& notices) {
    if (worked.isIn(before.extraArgs) && !worked.isIn(after.extraArgs)) {
        const auto lost = worked.missingIn(after.extraArgs);
        notices.push_back(separationDropped(shellWords(lost.empty() ? worked.plan.arguments : lost),
                                            name, Remedy::workOutArguments));
    }
    std::vector<std::string> variables;
    for (const auto& [key, value] : worked.plan.environment) {
        const auto had = before.environment.find(key);
        const auto has = after.environment.find(key);
        if (had == before.environment.end() || had->second != value) continue;
        const bool isName =
            std::ranges::find(worked.plan.nameVariables, key) != worked.plan.nameVariables.end();
        const bool isLost = has == after.environment.end() || (has->second != value && !isName);
        if (isLost) variables.push_back(key);
    }
    if (variables.empty()) return;
    notices.push_back(separationDropped(shellWords(variables), name, Remedy::workOutVariables));
}

/// Never fails: it is told what is known.
std::vector<Notice> noticesOnDropped(const InstanceRecord& before, const InstanceRecord& after,
                                     const UserPlaces& user, const Environment& environment) {
    std::vector<Notice> notices;
    if (before.config.targetAppPath != after.config.targetAppPath) return notices;
    // Working it out takes longer than all else of an edit: it asks after the program's package and
    // looks through its libraries.
    const bool isStartKept = before.config.extraArgs == after.config.extraArgs &&
                             before.config.environment == after.config.environment;
    if (isStartKept) return notices;
    try {
        const auto worked = WorkedOut::of(before.config, "", user, environment);
        addDropped(before.config, after.config, worked, nameFor(after, user), notices);
    } catch (const std::exception&) {
        // Without the application nothing can be said of how it is started.
    }
    return notices;
}

/// What it means that the instance has no names of its own any more. Never fails: it is told what
/// is known.
std::vector<Notice> noticesOnSharing(const InstanceConfig& before, const InstanceConfig& after,
                                     const UserPlaces& user, const Environment& environment) {
    if (!losesOwnNames(before, after)) return {};
    auto notices = noticesOnUnheeded(standingOf(after));
    try {
        const auto app = ambrel::AppBundle::read(after.targetAppURL());
        if (!app) return notices;
        const auto worked = WorkedOut::of(after, "", user, environment);
        auto obstacle = busObstacle(worked.plan, *app, after);
        if (obstacle) notices.push_back(std::move(*obstacle));
    } catch (const std::exception&) {
        // Without the application nothing can be said of how it is started.
    }
    return notices;
}

/// Only the name of an instance that is given a new one is looked at.
InstanceConfig checkedConfig(const InstanceRecord& record, InstanceConfig wanted) {
    const bool isNamed = wanted.displayName != record.config.displayName;
    if (isNamed) wanted.displayName = checkedName(wanted.displayName);
    wanted.iconLabel = visibleLabel(wanted.iconLabel);
    return wanted;
}

/// Brings the bundle to what is wanted, and returns where it stands then.
Path writeBundle(const InstanceRecord& record, const InstanceConfig& wanted,
                 const std::optional<Path>& icon, const UserPlaces& user,
                 std::vector<Notice>& notices) {
    if (!icon && !needsRebuilding(record.config, wanted)) {
        writeWithInfoPlist(record, wanted);
        return record.bundleURL;
    }
    auto rebuilt = rebuild(record, wanted, icon, user);
    append(notices, std::move(rebuilt.notices));
    const bool isMoved = wanted.displayName != record.config.displayName;
    return isMoved ? rebuilt.bundle : record.bundleURL;
}

/// The look of a status item is kept for an instance without one, and changes nothing there.
std::optional<Notice> lookObstacle(const InstanceConfig& before, const InstanceRecord& after,
                                   const UserPlaces& user) {
    const auto& config = after.config;
    if (!config.menuBarIconTemplate || before.menuBarIconTemplate || config.menuBarIcon) return {};
    return Notice{.kind = Notice::Kind::lookWithoutItem,
                  .subject = nameFor(after, user),
                  .sentence = "It shows no status item that could be drawn as a template: "
                              "menuBarIcon is false."};
}

/// What speaks against the new look, the new label or the new home.
void addObstacles(Edited& edited, const UserPlaces& user) {
    const auto& config = edited.record.config;
    auto unshown = lookObstacle(edited.before.config, edited.record, user);
    if (unshown) edited.notices.push_back(std::move(*unshown));
    const bool isLabelled = config.iconLabel != edited.before.config.iconLabel;
    auto unseen = isLabelled ? labelObstacle(edited.record) : std::nullopt;
    if (unseen) edited.notices.push_back(std::move(*unseen));
    if (!edited.homeChanged) return;
    auto obstacle = homeObstacle(usableHome(config, user).value_or(""));
    if (obstacle) edited.notices.push_back(std::move(*obstacle));
    auto notPrivate = privacyObstacle(config, user);
    if (notPrivate) edited.notices.push_back(std::move(*notPrivate));
}

} // namespace

std::string whyNotEdited(const std::string& name) {
    if (name == "kind") return "What an instance opens is what it was made for.";
    return "The bundle carries " + name +
           " outside its configuration (Info.plist, icon or folder name), and an edit would not "
           "change it.";
}

Edited change(const InstanceRecord& record, const InstanceConfig& asked, const UserPlaces& user,
              const Environment& environment, const std::optional<Path>& icon) {
    requireUnchanged(record, user);
    const auto wanted = checkedConfig(record, asked);
    requireSameBundle(record.config, wanted);
    requireHeededChanges(record.config, wanted);
    requireNewBusSettings(record.config, wanted);
    requireNewAddress(record.config, wanted);
    requireUsableHome(record, wanted, user);
    if (wanted.displayName != record.config.displayName) requireRenamable(record, user);
    const auto entry = registration::findEntry(record, user);
    Edited edited{.before = record,
                  .record = {record.bundleURL, wanted},
                  .homeChanged = wanted.instanceHome != record.config.instanceHome,
                  .notices = {}};
    ambrel::NewFolders folders;
    makeHome(wanted, user, folders);
    edited.record.bundleURL = writeBundle(record, wanted, icon, user, edited.notices);
    folders.keep();
    append(edited.notices, furnishHome(wanted, user));
    const bool isMoved = edited.record.bundleURL != record.bundleURL;
    append(edited.notices, isMoved ? presence::moved(entry, edited.record, user)
                                   : presence::changed(edited.record, user));
    append(edited.notices, noticesOnDropped(record, edited.record, user, environment));
    append(edited.notices, noticesOnSharing(record.config, wanted, user, environment));
    append(edited.notices, noticesOnOverriding(edited.record.config, &record.config, user));
    if (edited.homeChanged) forgetHome(record.config, user);
    addObstacles(edited, user);
    return edited;
}

} // namespace korvane
