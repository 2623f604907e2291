#include "korvane/Verbs/ProfileVerb.h"

#include "Ambrel/Application/AppProfile.h"
#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Base/Refusal.h"
#include "Manager/Rules/UserText.h"
#include "korvane/CommandLine/Options.h"
#include "korvane/Output/Messages.h"
#include "korvane/Output/Table.h"

#include <ostream>

namespace korvane {

using ambrel::AppProfile;

namespace {

AppProfile readProfile(const ambrel::Path& file) {
    try {
        return AppProfile::decode(ambrel::fileSystem::read(file));
    } catch (const ambrel::DecodingError& error) {
        throw Refusal("Not a profile: " + ambrel::utf8::oneLine(file) + ". " + error.description());
    }
}

void writeTable(const AppProfile& profile, const Surroundings& surroundings) {
    Table table;
    table.add({"name", profile.displayName});
    table.add({"identifier", profile.bundleId});
    table.add({"strategy", std::string(rawValue(profile.strategy))});
    table.add({"single copy", std::string(rawValue(profile.singleton))});
    table.add({"sandboxed", yesOrNo(profile.sandboxed)});
    table.add({"preferences leak", yesOrNo(profile.prefsLeak)});
    for (const auto& argument : profile.extraArgs) table.add({"argument", argument});
    for (const auto& signature : profile.verifiedOn) table.add({"verified on", signature});
    table.add({"confidence", std::string(rawValue(profile.confidence))});
    table.write(surroundings.results);
}

struct ProfileOptions {
    std::string file;
    std::optional<std::string> signature;
    bool asJson = false;
};

int check(const ProfileOptions& options, const Surroundings& surroundings) {
    if (options.signature) requireUtf8(*options.signature, "--signature");
    auto profile = readProfile(usablePath(options.file, surroundings.user));
    const auto stated = profile.confidence;
    if (options.signature) profile = profile.reconciled(*options.signature);
    if (options.asJson) {
        surroundings.results << profile.encodedJSON() << '\n';
    } else {
        writeTable(profile, surroundings);
    }
    if (profile.confidence != stated) {
        say(surroundings, "It was not verified on " + inQuotes(*options.signature) +
                              ": its confidence is lowered from " + std::string(rawValue(stated)) +
                              " to " + std::string(rawValue(profile.confidence)) + ".");
    } else if (!options.signature) {
        say(surroundings, "Its confidence is as the file states it; compare it with an environment "
                          "by --signature.");
    }
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
