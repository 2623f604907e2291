#include "korvane/Verbs/CreateOptions.h"

#include "Manager/Base/Quoting.h"
#include "Manager/Programs/PathSearch.h"
#include "Manager/Rules/UserText.h"
#include "korvane/CommandLine/EnumText.h"
#include "korvane/Verbs/OptionValues.h"

namespace korvane {

using ambrel::IconLabel;
using ambrel::Path;
using ambrel::ShortcutKind;

namespace {

/// The operation would refuse these too, but cannot know what an option is called.
void requireAllUtf8(const CreateOptions& options) {
    const std::pair<const std::optional<std::string>&, const char*> single[] = {
        {options.home, "--home"},
        {options.output, "--output"},
        {options.bundleId, "--bundle-id"},
        {options.icon, "--icon"},
        {options.workingDirectory, "--working-directory"},
        {options.label, "--label"},
        {options.runner, "--runner"},
        {options.processName, "--process-name"},
    };
    for (const auto& [text, name] : single) requireUtf8(text.value_or(""), name);
    requireUtf8(options.subject, "the second word");
    requireUtf8Each(options.commandArgs, "an argument");
    requireUtf8Each(options.args, "--arg");
    requireUtf8Each(options.addArgs, "--add-arg");
    requireUtf8Each(options.environment, "--env");
    requireUtf8Each(options.plist, "--plist");
}

std::optional<IconLabel> labelFrom(const CreateOptions& options) {
    if (!options.label) {
        if (!options.labelColor && !options.labelPosition) return std::nullopt;
        throw UsageError("--label-color and --label-position want the text of the --label.");
    }
    return labelWith({*options.label, "FFFFFF", IconLabel::Position::bottom}, options.labelColor,
                     options.labelPosition);
}

Path homeFrom(const std::string& text) {
    if (text.empty()) throw UsageError("--home wants a folder.");
    return storedPath(text);
}

Path programFrom(const std::string& text, const Surroundings& surroundings) {
    const bool isPath = text.find('/') != std::string::npos || text.starts_with('~');
    return isPath ? storedPath(text) : requireProgram(text, surroundings.environment);
}

void setSubject(const CreateOptions& options, const Surroundings& surroundings,
                CreateRequest& request) {
    const auto& subject = options.subject;
    if (subject.empty()) return;
    switch (options.kind) {
    case ShortcutKind::app:
        request.program = subject;
        break;
    case ShortcutKind::web:
        request.url = subject;
        break;
    case ShortcutKind::file:
        request.openPath = storedPath(subject);
        break;
    case ShortcutKind::command:
        request.commandPath = programFrom(subject, surroundings);
        request.commandArgs = options.commandArgs;
        request.inTerminal = options.terminal;
        break;
    }
}

void setPlaces(const CreateOptions& options, const Surroundings& surroundings,
               CreateRequest& request) {
    if (options.home) request.home = homeFrom(*options.home);
    if (options.output) request.outputFolder = usablePath(*options.output, surroundings.user);
    if (options.bundleId && options.bundleId->empty()) {
        throw UsageError("--bundle-id wants an identifier.");
    }
    request.bundleId = options.bundleId;
    if (options.workingDirectory) request.workingDirectory = storedPath(*options.workingDirectory);
    if (options.runner) request.runner = usablePath(*options.runner, surroundings.user);
    request.existing = options.replace ? Existing::replace : Existing::refuse;
}

void setStart(const CreateOptions& options, CreateRequest& request) {
    if (options.strategy) {
        request.strategy = enumFrom<ambrel::Strategy>(*options.strategy, "--strategy");
    }
    request.args = options.args;
    request.addedArgs = options.addArgs;
    request.environment = mapFrom(options.environment, "--env");
    request.processName = options.processName;
    request.sharedBus = options.sharedBus;
    request.hideSecrets = options.hideSecrets;
    request.useProfile = options.noProfile ? UseProfile::no : UseProfile::yes;
    if (options.noShareFolders) request.shareUserFolders = false;
    request.infoPlistOverrides = mapFrom(options.plist, "--plist");
    if (const auto name = processNameOf(request)) {
        requireProcessName(*name, options.processName ? "--process-name" : ambrel::processNameKey);
    }
}

void setLook(const CreateOptions& options, const Surroundings& surroundings,
             CreateRequest& request) {
    if (options.icon) request.icon = usablePath(*options.icon, surroundings.user);
    request.iconLabel = labelFrom(options);
    if (options.hideIcon) request.hideIcon = true;
    request.registerAsBrowser = options.browser;
    request.openWithPassthrough = options.openWith;
    if (options.menuBar || options.menuBarTemplate) request.menuBarIcon = true;
    if (options.menuBarTemplate) request.menuBarIconTemplate = true;
}

} // namespace

CreateRequest requestFrom(const CreateOptions& options, const Surroundings& surroundings) {
    CreateRequest request;
    request.kind = options.kind;
    request.name = checkedName(options.name);
    requireAllUtf8(options);
    setLook(options, surroundings, request);
    setPlaces(options, surroundings, request);
    setStart(options, request);
    setSubject(options, surroundings, request);
    return request;
}

} // namespace korvane
