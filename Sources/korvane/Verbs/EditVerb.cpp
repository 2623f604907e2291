#include "korvane/Verbs/EditVerb.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Platform/FileError.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/PropertyList.h"
#include "Ambrel/Wrapper/WrapperGenerator.h"
#include "Manager/Base/ManagerError.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Rules/InfoPlistKeys.h"
#include "Manager/Rules/InstanceHome.h"
#include "Manager/Rules/InstanceLookup.h"
#include "Manager/Rules/UserText.h"
#include "korvane/CommandLine/Options.h"
#include "korvane/Output/Messages.h"
#include "korvane/Verbs/ConfigEdit.h"
#include "korvane/Verbs/DesktopPresence.h"

#include <algorithm>

namespace korvane {

using ambrel::InstanceConfig;
using ambrel::InstanceRecord;
using ambrel::InstanceRegistry;
using ambrel::Path;

namespace {

struct EditOptions {
    std::string name;
    std::vector<std::string> set;
    std::vector<std::string> unset;
};

void requireNoContradiction(const EditOptions& options) {
    if (options.set.empty() && options.unset.empty()) {
        throw UsageError("Nothing to change: give --set KEY=VALUE or --unset KEY.");
    }
    for (const auto& assignment : options.set) {
        requireUtf8(assignment, "--set");
        const auto key = edit::keyOf(assignment);
        if (std::find(options.unset.begin(), options.unset.end(), key) != options.unset.end()) {
            throw UsageError(inQuotes(key) + " is both set and unset.");
        }
    }
    for (const auto& key : options.unset) requireUtf8(key, "--unset");
}

InstanceConfig edited(const InstanceRecord& record, const EditOptions& options,
                      const ambrel::UserPlaces& user) {
    auto config = record.config;
    for (const auto& key : options.unset) edit::unset(config, key);
    for (const auto& assignment : options.set) edit::set(config, assignment, user);
    return config;
}

void requireUsableHome(const InstanceRecord& record, const InstanceConfig& config,
                       const ambrel::UserPlaces& user) {
    if (config.instanceHome == record.config.instanceHome) return;
    if (!usableHome(config, user)) {
        throw Refusal("The home " + inQuotes(config.instanceHome) + " names an unknown user.");
    }
    const Path folder{ambrel::paths::deletingLastComponent(record.bundleURL)};
    requireOwnHome(config, record.bundleURL, instancesWith(folder, user), user,
                   "Choose another one.");
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

void restore(const Path& file, const std::string& bytes) {
    try {
        ambrel::fileSystem::write(file, bytes);
    } catch (const ambrel::FileError& error) {
        throw Refusal("The change could not be written, and the old configuration not restored. " +
                      error.description());
    }
    throw Refusal("The change could not be written to " + ambrel::utf8::oneLine(file) +
                  "; the old configuration is back.");
}

/// The registry reports no failure, so the file itself is asked.
void writeChecked(const InstanceRecord& record, const InstanceConfig& config,
                  const ambrel::UserPlaces& user) {
    const auto file = ambrel::BundleLayout{record.bundleURL}.instanceJson();
    const auto before = ambrel::fileSystem::read(file);
    const auto meant = config.encode();
    InstanceRegistry(user).update(record, [&](InstanceConfig& stored) { stored = config; });
    const auto after = contents(file);
    if (after == meant) return;
    if (after == before) {
        throw Refusal("The change could not be written to " + ambrel::utf8::oneLine(file) +
                      "; nothing was changed.");
    }
    restore(file, before);
}

/// Info.plist with what the configuration says of names.
std::string infoPlistWith(const InstanceConfig& config, const Path& file) {
    auto info = ambrel::readPropertyList(file);
    if (!info)
        throw Refusal("The bundle is damaged: " + ambrel::utf8::oneLine(file) + " cannot be read.");
    for (const auto* key : {ambrel::processNameKey, windowClassKey}) {
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
void writeWithInfoPlist(const InstanceRecord& record, const InstanceConfig& config,
                        const ambrel::UserPlaces& user) {
    if (config.infoPlistOverrides == record.config.infoPlistOverrides) {
        writeChecked(record, config, user);
        return;
    }
    const auto file = ambrel::BundleLayout{record.bundleURL}.infoPlist();
    const auto before = ambrel::fileSystem::read(file);
    ambrel::fileSystem::replace(file, infoPlistWith(config, file));
    try {
        writeChecked(record, config, user);
    } catch (...) {
        putBack(file, before);
        throw;
    }
}

int editInstance(const EditOptions& options, const Surroundings& surroundings) {
    requireNoContradiction(options);
    const auto record = requireInstance(options.name, surroundings.user);
    const auto config = edited(record, options, surroundings.user);
    requireUsableHome(record, config, surroundings.user);
    ambrel::NewFolders folders;
    makeHome(config, surroundings.user, folders);
    writeWithInfoPlist(record, config, surroundings.user);
    folders.keep();
    for (const auto& failure : furnishHome(config, surroundings.user))
        warn(surroundings, failure + ".");
    presence::changed({record.bundleURL, config}, surroundings);
    say(surroundings, "Changed " + inQuotes(record.config.displayName) + ".");
    if (config.instanceHome != record.config.instanceHome) {
        const auto obstacle = homeObstacle(usableHome(config, surroundings.user).value_or(""));
        if (obstacle) warn(surroundings, *obstacle);
        say(surroundings, "Its data stays in " + ambrel::utf8::oneLine(record.config.instanceHome) +
                              "; from now on it uses " +
                              ambrel::utf8::oneLine(config.instanceHome) + ".");
    }
    if (config.iconLabel != record.config.iconLabel) {
        say(surroundings, "The icon itself is drawn anew only by: korvane create … --replace");
    }
    say(surroundings, "See it with: " + commandLine("show", {nameFor(record, surroundings.user)}));
    return 0;
}

} // namespace

Verb editVerb() {
    return {"edit",
            "Change the configuration of an instance.",
            {"korvane edit Work --set environment.LANG=C --unset extraArgs",
             "korvane edit Work --set 'extraArgs=[\"--incognito\"]'",
             "korvane edit Work --set shareUserFolders=false"},
            [](CLI::App& app, const Surroundings& surroundings) -> Action {
                const auto given = std::make_shared<EditOptions>();
                options::instanceName(app, given->name);
                options::texts(app, "--set", given->set,
                               "Set a field: JSON for Booleans, lists and maps, else plain text")
                    ->type_name("KEY=VALUE");
                options::texts(app, "--unset", given->unset, "Give a field its default")
                    ->type_name("KEY");
                return [given, &surroundings](const auto&) {
                    return editInstance(*given, surroundings);
                };
            },
            {.severalValues = true}};
}

} // namespace korvane
