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
#include "Manager/Operations/Unchanged.h"
#include "Manager/Rules/InfoPlistKeys.h"
#include "Manager/Rules/InstanceHome.h"
#include "Manager/Rules/InstanceLookup.h"

namespace korvane {

using ambrel::InstanceConfig;
using ambrel::InstanceRecord;
using ambrel::Path;
using ambrel::UserPlaces;
using Kind = Refusal::Kind;

namespace {

constexpr const char* editedKeys[] = {ambrel::processNameKey, windowClassKey};

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
        if (config.*field.member == wanted.*field.member) return;
        throw Refusal(Kind::fieldIsBundles, field.key, whyNotEdited(field.key),
                      Remedy::createAgain);
    });
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
}

/// What the file holds now, absent when it cannot be read.
std::optional<std::string> contents(const Path& file) {
    try {
        return ambrel::fileSystem::read(file);
    } catch (const ambrel::FileError&) {
        // As good as different from what was meant.
        return std::nullopt;
    }
}

[[noreturn]] void restore(const Path& file, const std::string& bytes) {
    try {
        ambrel::fileSystem::write(file, bytes);
    } catch (const ambrel::FileError& error) {
        throw Refusal(Kind::notRestored, file,
                      "The change could not be written, and the old configuration not restored. " +
                          error.description());
    }
    throw Refusal(Kind::notWritten, file,
                  "The change could not be written to " + ambrel::utf8::oneLine(file) +
                      "; the old configuration is back.");
}

/// The registry reports no failure, so the file itself is asked.
void writeChecked(const InstanceRecord& record, const InstanceConfig& wanted,
                  const UserPlaces& user) {
    const auto file = ambrel::BundleLayout{record.bundleURL}.instanceJson();
    const auto before = ambrel::fileSystem::read(file);
    const auto meant = wanted.encode();
    ambrel::InstanceRegistry(user).update(record, [&](InstanceConfig& stored) { stored = wanted; });
    const auto after = contents(file);
    if (after == meant) return;
    if (after != before) restore(file, before);
    throw Refusal(Kind::notWritten, file,
                  "The change could not be written to " + ambrel::utf8::oneLine(file) +
                      "; nothing was changed.");
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
void writeWithInfoPlist(const InstanceRecord& record, const InstanceConfig& wanted,
                        const UserPlaces& user) {
    if (wanted.infoPlistOverrides == record.config.infoPlistOverrides) {
        writeChecked(record, wanted, user);
        return;
    }
    const auto file = ambrel::BundleLayout{record.bundleURL}.infoPlist();
    const auto before = ambrel::fileSystem::read(file);
    ambrel::fileSystem::replace(file, infoPlistWith(wanted, file));
    try {
        writeChecked(record, wanted, user);
    } catch (...) {
        putBack(file, before);
        throw;
    }
}

} // namespace

std::string whyNotEdited(const std::string& name) {
    return "The bundle carries " + name +
           " outside its configuration (Info.plist, icon or folder name), and an edit would not "
           "change it.";
}

Edited change(const InstanceRecord& record, const InstanceConfig& wanted, const UserPlaces& user) {
    requireUnchanged(record, user);
    requireSameBundle(record.config, wanted);
    requireUsableHome(record, wanted, user);
    ambrel::NewFolders folders;
    makeHome(wanted, user, folders);
    writeWithInfoPlist(record, wanted, user);
    folders.keep();
    Edited edited{.before = record,
                  .record = {record.bundleURL, wanted},
                  .homeChanged = wanted.instanceHome != record.config.instanceHome,
                  .iconIsOutdated = wanted.iconLabel != record.config.iconLabel,
                  .notices = furnishHome(wanted, user)};
    for (auto& notice : presence::changed(edited.record, user)) {
        edited.notices.push_back(std::move(notice));
    }
    if (!edited.homeChanged) return edited;
    forgetHome(record.config, user);
    auto obstacle = homeObstacle(usableHome(wanted, user).value_or(""));
    if (obstacle) edited.notices.push_back(std::move(*obstacle));
    return edited;
}

} // namespace korvane
