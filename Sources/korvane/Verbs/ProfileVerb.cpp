#include "korvane/Verbs/ProfileVerb.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Manager/Base/NearestWord.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Base/Refusal.h"
#include "Manager/Programs/ProgramProfile.h"
#include "Manager/Rules/UserText.h"
#include "korvane/CommandLine/Options.h"
#include "korvane/Output/Messages.h"
#include "korvane/Output/Table.h"

#include <ostream>

namespace korvane {

namespace {

void addMap(Table& table, const std::string& key, const ambrel::StringMap& map) {
    for (const auto& [name, value] : map) table.add({key, name + "=" + value});
}

void addWindowName(Table& table, const WindowName& name) {
    for (const auto& argument : name.arguments) table.add({"windowName.arguments", argument});
    addMap(table, "windowName.environment", name.environment);
    table.add({"windowName.processName", name.byProcessName ? "true" : "false"});
    if (name.startupWmClass) table.add({"windowName.startupWMClass", *name.startupWmClass});
}

void addBus(Table& table, const BusUse& bus) {
    if (bus.isShared) table.add({"bus.shared", "true"});
    if (bus.hidesSecrets) table.add({"bus.hideSecrets", "true"});
    for (const auto& name : bus.call) table.add({"bus.call", name});
    for (const auto& name : bus.own) table.add({"bus.own", name});
    if (bus.handsOver) table.add({"bus.handsOver", *bus.handsOver ? "true" : "false"});
}

/// In the words of the file, which is what is to be corrected.
void writeTable(const ProgramProfile& found, const Surroundings& surroundings) {
    const auto& profile = found.profile;
    const auto spoken = [](bool value) { return value ? "true" : "false"; };
    Table table;
    table.add({"displayName", profile.displayName});
    table.add({"bundleId", profile.bundleId});
    table.add({"strategy", std::string(rawValue(profile.strategy))});
    table.add({"singleton", std::string(rawValue(profile.singleton))});
    table.add({"sandboxed", spoken(profile.sandboxed)});
    table.add({"prefsLeak", spoken(profile.prefsLeak)});
    for (const auto& argument : profile.extraArgs) table.add({"extraArgs", argument});
    addMap(table, "environment", found.environment);
    if (found.windowName) addWindowName(table, *found.windowName);
    addBus(table, found.bus);
    for (const auto& argument : found.former.arguments) table.add({"former.extraArgs", argument});
    addMap(table, "former.environment", found.former.environment);
    for (const auto& signature : profile.verifiedOn) table.add({"verifiedOn", signature});
    table.add({"confidence", std::string(rawValue(profile.confidence))});
    table.write(surroundings.results);
}

/// What the file says that nobody heeds, or that can hardly be meant.
void warnOfOddities(const ProgramProfile& found, const Surroundings& surroundings) {
    for (const auto& key : unknownKeys(ambrel::fileSystem::read(found.file))) {
        const auto meant = nearest(key, profileKeys());
        warn(surroundings, "The key " + inQuotes(key) + " means nothing in a profile." +
                               (meant.empty() ? "" : " Did you mean " + inQuotes(meant) + "?"));
    }
    const auto& profile = found.profile;
    if (profile.bundleId.empty()) warn(surroundings, "Its bundleId is empty: it is never used.");
    if (profile.displayName.empty()) warn(surroundings, "Its displayName is empty.");
    const bool claims = profile.confidence == ambrel::Confidence::verified;
    if (claims && profile.verifiedOn.empty()) {
        warn(surroundings, "It claims to be verified, but verifiedOn names no environment.");
    }
}

/// Whether instances get this profile or another one.
void tellUse(const ProgramProfile& checked, const Surroundings& surroundings) {
    const auto& id = checked.profile.bundleId;
    if (id.empty()) return;
    std::optional<ProgramProfile> used;
    try {
        used = findProfile(id, surroundings.user);
    } catch (const Refusal& refusal) {
        warn(surroundings, refusal.sentence()); // about the one in use, not the one that is checked
        return;
    }
    if (!used) {
        say(surroundings, "It is not in use. Instances of " + inQuotes(id) + " get it as: " +
                              ambrel::utf8::oneLine(ownProfileFile(id, surroundings.user)));
    } else if (ambrel::fileSystem::isSameItem(used->file, checked.file)) {
        say(surroundings, "Instances of " + inQuotes(id) + " get it.");
    } else {
        say(surroundings, "It is not in use. Instances of " + inQuotes(id) +
                              " get: " + ambrel::utf8::oneLine(used->file));
    }
}

struct ProfileOptions {
    std::string file;
    std::optional<std::string> signature;
    bool asJson = false;
};

int check(const ProfileOptions& options, const Surroundings& surroundings) {
    if (options.signature) requireUtf8(*options.signature, "--signature");
    auto found = readProfile(usablePath(options.file, surroundings.user));
    auto& profile = found.profile;
    const auto stated = profile.confidence;
    if (options.signature) profile = profile.reconciled(*options.signature);
    if (options.asJson) {
        surroundings.results << found.encodedJSON() << '\n';
    } else {
        writeTable(found, surroundings);
    }
    warnOfOddities(found, surroundings);
    if (profile.confidence != stated) {
        say(surroundings, "It was not verified on " + inQuotes(*options.signature) +
                              ": its confidence is lowered from " + std::string(rawValue(stated)) +
                              " to " + std::string(rawValue(profile.confidence)) + ".");
    } else if (!options.signature) {
        say(surroundings, "Its confidence is as the file states it; compare it with an environment "
                          "by --signature.");
    }
    tellUse(found, surroundings);
    return 0;
}

} // namespace

Verb profileCheckVerb() {
    return {"profile check",
            "Check the profile of an application and reconcile it.",
            {"korvane profile check mail.json", "korvane profile check mail.json --signature 14.5"},
            [](CLI::App& app, const Surroundings& surroundings) -> Action {
                const auto given = std::make_shared<ProfileOptions>();
                options::text(app, "FILE", given->file, "The profile, as JSON")->required();
                options::text(app, "--signature", given->signature,
                              "The environment that the profile should have been verified on");
                options::asJson(app, given->asJson);
                return [given, &surroundings](const auto&) { return check(*given, surroundings); };
            }};
}

} // namespace korvane
