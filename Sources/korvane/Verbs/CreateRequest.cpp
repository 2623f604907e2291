#include "korvane/Verbs/CreateRequest.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Instance/DesktopId.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Manager/Base/ManagerError.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Programs/PathSearch.h"
#include "Manager/Rules/InfoPlistKeys.h"
#include "Manager/Rules/UserText.h"
#include "korvane/Verbs/ApplicationLookup.h"

namespace korvane {

using ambrel::IconLabel;
using ambrel::Path;
using ambrel::ShortcutKind;
using ambrel::StringMap;
using ambrel::WrapperFactory;

namespace {

void requireUtf8Each(const std::vector<std::string>& texts, const std::string& what) {
    for (const auto& text : texts) requireUtf8(text, what);
}

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

StringMap mapFrom(const std::vector<std::string>& texts, const std::string& option) {
    StringMap map;
    for (const auto& text : texts) {
        auto [key, value] = keyAndValue(text, option);
        map.insert_or_assign(std::move(key), std::move(value));
    }
    return map;
}

std::optional<IconLabel> labelFrom(const CreateOptions& options) {
    if (!options.label) {
        if (!options.labelColor && !options.labelPosition) return std::nullopt;
        throw UsageError("--label-color and --label-position want the text of the --label.");
    }
    using Position = IconLabel::Position;
    return IconLabel{
        *options.label, checkedColor(options.labelColor.value_or("FFFFFF")),
        enumFrom<Position>(options.labelPosition.value_or("bottom"), "--label-position")};
}

std::optional<Path> iconFrom(const CreateOptions& options, const Surroundings& surroundings) {
    if (!options.icon) return std::nullopt;
    const auto icon = usablePath(*options.icon, surroundings.user);
    // The library falls back to the application's own icon without a word.
    if (!ambrel::fileSystem::exists(icon) || ambrel::fileSystem::isFolder(icon)) {
        throw Refusal("The icon is no file: " + ambrel::utf8::oneLine(icon));
    }
    return icon;
}

Path programFrom(const std::string& text, const Surroundings& surroundings) {
    if (text.empty()) throw Refusal("The program's name is empty.");
    if (text.find('/') != std::string::npos || text.starts_with('~')) return storedPath(text);
    if (const auto found = findProgram(text, surroundings.environment)) return *found;
    throw Refusal("No program called " + inQuotes(text) + " is in the folders of PATH.");
}

void setSubject(const CreateOptions& options, const Surroundings& surroundings,
                PreparedRequest& prepared) {
    auto& request = prepared.request;
    const auto& subject = options.subject;
    if (subject.empty())
        throw Refusal("There is nothing to make an instance of: the text is empty.");
    switch (options.kind) {
    case ShortcutKind::app:
        prepared.target = requireApplication(subject, surroundings);
        request.targetApp = prepared.target->url;
        requireUtf8(prepared.target->url, "the application's path");
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
        break;
    }
}

/// The name by which the user wants the program to be started.
std::optional<std::string> processNameFrom(const CreateOptions& options) {
    auto name = options.processName;
    const char* said = "--process-name";
    for (const auto& [key, value] : mapFrom(options.plist, "--plist")) {
        if (name || key != ambrel::processNameKey) continue;
        name = value;
        said = ambrel::processNameKey;
    }
    if (name) requireProcessName(*name, said);
    return name;
}

/// The variables of the plan, and those given, which have the last word.
StringMap environmentFrom(const CreateOptions& options, const PreparedRequest& prepared) {
    auto environment = mapFrom(options.environment, "--env");
    if (!prepared.plan) return environment;
    if (const auto name = processNameFrom(options)) {
        for (const auto& variable : prepared.plan->nameVariables) {
            environment.emplace(variable, *name);
        }
    }
    environment.merge(StringMap(prepared.plan->environment));
    return environment;
}

/// Absent where the library is to choose, which then chooses nothing.
std::optional<std::vector<std::string>> extraArgsFrom(const CreateOptions& options,
                                                      const PreparedRequest& prepared) {
    auto args = options.args;
    if (args.empty() && prepared.plan) args = prepared.plan->arguments;
    args.insert(args.end(), options.addArgs.begin(), options.addArgs.end());
    if (args.empty() && !prepared.plan) return std::nullopt;
    return args;
}

StringMap overridesFrom(const CreateOptions& options, const PreparedRequest& prepared) {
    auto overrides = mapFrom(options.plist, "--plist");
    const auto chosen = processNameFrom(options);
    if (chosen) overrides.insert_or_assign(ambrel::processNameKey, *chosen);
    if (!prepared.plan) return overrides;
    const auto& plan = *prepared.plan;
    if (plan.processName) overrides.emplace(ambrel::processNameKey, *plan.processName);
    const auto name = overrides.find(ambrel::processNameKey);
    const auto expected =
        name == overrides.end() ? ambrel::desktopId(*prepared.request.bundleId) : name->second;
    if (plan.windowClass && *plan.windowClass != expected) {
        overrides.emplace(windowClassKey, *plan.windowClass);
    }
    return overrides;
}

ambrel::Strategy strategyFrom(const CreateOptions& options, const PreparedRequest& prepared) {
    if (options.strategy) return enumFrom<ambrel::Strategy>(*options.strategy, "--strategy");
    const bool isSaid = prepared.plan && prepared.plan->profile;
    return isSaid ? prepared.plan->profile->profile.strategy : ambrel::Strategy::homeOverride;
}

/// What depends on how the target is started.
void setStart(const CreateOptions& options, const Surroundings& surroundings,
              PreparedRequest& prepared) {
    auto& request = prepared.request;
    if (prepared.target) {
        prepared.plan = planStart(*prepared.target, ambrel::desktopId(*request.bundleId),
                                  options.noProfile ? UseProfile::no : UseProfile::yes,
                                  surroundings.user, surroundings.environment);
    }
    request.strategy = strategyFrom(options, prepared);
    request.environment = environmentFrom(options, prepared);
    request.extraArgs = extraArgsFrom(options, prepared);
    request.infoPlistOverrides = overridesFrom(options, prepared);
}

Path homeFrom(const CreateOptions& options, const std::string& name) {
    if (!options.home) return WrapperFactory::defaultInstanceHome(name);
    if (options.home->empty()) throw UsageError("--home wants a folder.");
    return storedPath(*options.home);
}

void setLook(const CreateOptions& options, const Surroundings& surroundings,
             WrapperFactory::Request& request) {
    request.customIcon = iconFrom(options, surroundings);
    request.hideWrapperIcon = options.hideIcon;
    request.registerAsBrowser = options.browser;
    request.openWithPassthrough = options.openWith;
    request.iconLabel = labelFrom(options);
    request.menuBarIcon = options.menuBar;
    request.menuBarIconTemplate = options.menuBarTemplate;
}

} // namespace

std::pair<std::string, std::string> keyAndValue(const std::string& text,
                                                const std::string& option) {
    const auto equals = text.find('=');
    if (equals != std::string::npos && equals > 0) {
        return {text.substr(0, equals), text.substr(equals + 1)};
    }
    throw UsageError(option + " wants KEY=VALUE, not " + inQuotes(text) + ".");
}

PreparedRequest prepareRequest(const CreateOptions& options, const Surroundings& surroundings) {
    PreparedRequest prepared;
    auto& request = prepared.request;
    request.kind = options.kind;
    request.displayName = checkedName(options.name);
    requireAllUtf8(options);
    setLook(options, surroundings, request);
    request.instanceHome = homeFrom(options, request.displayName);
    request.outputDir = options.output ? usablePath(*options.output, surroundings.user)
                                       : WrapperFactory::defaultOutputDir(surroundings.user);
    request.bundleId =
        options.bundleId.value_or(WrapperFactory::defaultBundleId(request.displayName));
    if (request.bundleId->empty()) throw UsageError("--bundle-id wants an identifier.");
    if (options.workingDirectory) request.workingDirectory = storedPath(*options.workingDirectory);
    request.shareUserFolders = !options.noShareFolders;
    if (options.runner) prepared.runner = usablePath(*options.runner, surroundings.user);
    setSubject(options, surroundings, prepared);
    setStart(options, surroundings, prepared);
    return prepared;
}

} // namespace korvane
