#include "Manager/Operations/CreateRequest.h"

#include "Manager/Base/Quoting.h"
#include "Manager/Base/Refusal.h"
#include "Manager/Desktop/Registration.h"
#include "Manager/Rules/FieldEffect.h"
#include "Manager/Rules/SiteAddress.h"
#include "Manager/Rules/UserText.h"

namespace korvane {

using ambrel::Path;
using ambrel::ShortcutKind;
using Kind = Refusal::Kind;

namespace {

void requireUtf8Throughout(const ambrel::StringMap& map, const std::string& what) {
    for (const auto& [key, value] : map) {
        requireUtf8(key, what);
        requireUtf8(value, what);
    }
}

void requireAllUtf8(const CreateRequest& request) {
    const std::pair<std::string, const char*> single[] = {
        {request.home.value_or(""), "the home"},
        {request.outputFolder.value_or(""), "the output folder"},
        {request.bundleId.value_or(""), "the bundle identifier"},
        {request.icon.value_or(""), "the icon's path"},
        {request.workingDirectory.value_or(""), "the working directory"},
        {request.iconLabel ? request.iconLabel->text : "", "the label"},
        {request.runner.value_or(""), "the runner's path"},
        {request.processName.value_or(""), "the process name"},
        {request.targetApp, "the application's path"},
        {request.program.value_or(""), "the application"},
        {request.url, "the address"},
        {request.openPath, "the document's path"},
        {request.commandPath, "the program's path"},
    };
    for (const auto& [text, name] : single) requireUtf8(text, name);
    requireUtf8Each(request.commandArgs, "an argument");
    requireUtf8Each(request.args, "an argument");
    requireUtf8Each(request.addedArgs, "an argument");
    requireUtf8Throughout(request.environment, "a variable");
    requireUtf8Throughout(request.infoPlistOverrides, "an entry of Info.plist");
}

enum class Tilde { isKept, isNoStart };

void requireAbsolute(const std::optional<Path>& path, Tilde tilde) {
    if (!path || path->starts_with('/')) return;
    if (tilde == Tilde::isKept && path->starts_with('~')) return;
    throw Refusal(Kind::badPath, *path, "A path is not absolute: " + inQuotes(*path) + ".");
}

std::string subjectOf(const CreateRequest& request) {
    switch (request.kind) {
    case ShortcutKind::app:
        return request.program.value_or(request.targetApp);
    case ShortcutKind::web:
        return request.url;
    case ShortcutKind::file:
        return request.openPath;
    case ShortcutKind::command:
        return request.commandPath;
    }
    return {};
}

/// What would be stored and never heeded is refused: nobody is to rely on it.
void requireEffects(const CreateRequest& request) {
    const auto require = [&](bool given, const std::string& field, std::string_view key) {
        if (given) requireHeeded(field, key, request.kind);
    };
    require(!request.args.empty(), "args", "extraArgs");
    require(!request.addedArgs.empty(), "addedArgs", "extraArgs");
    require(request.strategy.has_value(), "strategy", "strategy");
    require(request.shareUserFolders.has_value(), "shareUserFolders", "shareUserFolders");
    require(!request.environment.empty(), "environment", "environment");
    require(request.workingDirectory.has_value(), "workingDirectory", "workingDirectory");
    require(request.inTerminal, "inTerminal", "commandPath");
    require(request.processName.has_value(), "processName", "targetAppPath");
    require(request.useProfile == UseProfile::no, "useProfile", "targetAppPath");
    if (request.sharedBus) requireBusHeeded("sharedBus", request.kind);
    if (request.hideSecrets) requireBusHeeded("hideSecrets", request.kind);
    require(request.home.has_value(), "home", "instanceHome");
    require(request.registerAsBrowser.has_value(), "registerAsBrowser", "registerAsBrowser");
    require(request.openWithPassthrough.has_value(), "openWithPassthrough", "openWithPassthrough");
    // Where instances have entries of their own, nothing but the entry shows them.
    if (!request.hideIcon.value_or(false) || !registration::isOffered()) return;
    throw Refusal(Kind::hasNoEffect, "hideIcon",
                  "hideIcon means nothing on this system, which has no Dock.",
                  Remedy::hideFromDesktop);
}

void requireSubject(const CreateRequest& request) {
    const auto subject = subjectOf(request);
    if (subject.empty()) {
        throw Refusal(Kind::nothingToOpen, "",
                      "There is nothing to make an instance of: the text is empty.");
    }
    if (request.kind == ShortcutKind::web) requireSiteAddress(subject);
    const bool isBundle = request.kind == ShortcutKind::app && !request.program;
    if (isBundle) requireAbsolute(subject, Tilde::isNoStart);
    const bool isStored =
        request.kind == ShortcutKind::file || request.kind == ShortcutKind::command;
    if (isStored) requireAbsolute(subject, Tilde::isKept);
}

} // namespace

void requireSensible(const CreateRequest& request) {
    checkedName(request.name);
    requireAllUtf8(request);
    requireEffects(request);
    if (request.iconLabel) checkedColor(request.iconLabel->colorHex);
    for (const auto& path : {request.outputFolder, request.icon, request.runner}) {
        requireAbsolute(path, Tilde::isNoStart);
    }
    for (const auto& path : {request.home, request.workingDirectory}) {
        requireAbsolute(path, Tilde::isKept);
    }
    if (request.bundleId && request.bundleId->empty()) {
        throw Refusal(Kind::badIdentifier, "", "The bundle identifier is empty.");
    }
    if (const auto name = processNameOf(request)) requireProcessName(*name, "The process name");
    requireBusSettings(request.infoPlistOverrides);
    requireSubject(request);
}

std::optional<std::string> processNameOf(const CreateRequest& request) {
    if (request.processName) return request.processName;
    const auto found = request.infoPlistOverrides.find(ambrel::processNameKey);
    if (found == request.infoPlistOverrides.end()) return std::nullopt;
    return found->second;
}

} // namespace korvane
