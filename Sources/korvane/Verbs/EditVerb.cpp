#include "korvane/Verbs/EditVerb.h"

#include "Ambrel/Base/Utf8.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Operations/Editing.h"
#include "Manager/Rules/FieldEffect.h"
#include "Manager/Rules/InstanceLookup.h"
#include "Manager/Rules/UserText.h"
#include "korvane/CommandLine/Options.h"
#include "korvane/Output/JsonOutput.h"
#include "korvane/Output/Messages.h"
#include "korvane/Output/Remedies.h"

#include <memory>

namespace korvane {

namespace {

/// Told after that the instance was changed.
bool isOnNewHome(const Notice& notice) { return notice.kind == Notice::Kind::homeIsLong; }

void tellAboutName(const Edited& edited, const Surroundings& surroundings) {
    const auto& before = edited.before.config.displayName;
    const auto& now = edited.record.config.displayName;
    if (before == now) {
        say(surroundings, "Changed " + inQuotes(before) + ".");
    } else {
        say(surroundings, "Changed " + inQuotes(before) + ", which is called " + inQuotes(now) +
                              " now and stands at " +
                              ambrel::utf8::oneLine(edited.record.bundleURL) + ".");
    }
}

/// Both were made of the name once, and are not made of the new one.
void tellWhatStays(const Edited& edited, const Surroundings& surroundings) {
    const auto& config = edited.record.config;
    if (config.displayName == edited.before.config.displayName) return;
    const auto identifier = ambrel::utf8::oneLine(config.bundleId);
    const bool isHomeTold = edited.homeChanged || !isHeeded("instanceHome", config.kind);
    say(surroundings, isHomeTold ? "Its identifier stays " + identifier + "."
                                 : "Its home stays " + ambrel::utf8::oneLine(config.instanceHome) +
                                       ", its identifier " + identifier + ".");
}

void tellAbout(const Edited& edited, const Surroundings& surroundings) {
    for (const auto& notice : edited.notices) {
        if (!isOnNewHome(notice)) tell(surroundings, notice);
    }
    tellAboutName(edited, surroundings);
    tellWhatStays(edited, surroundings);
    for (const auto& notice : edited.notices) {
        if (isOnNewHome(notice)) tell(surroundings, notice);
    }
    if (edited.homeChanged) {
        say(surroundings, "Its data stays in " +
                              ambrel::utf8::oneLine(edited.before.config.instanceHome) +
                              "; from now on it uses " +
                              ambrel::utf8::oneLine(edited.record.config.instanceHome) + ".");
    }
    say(surroundings,
        "See it with: " + commandLine("show", {nameFor(edited.record, surroundings.user)}));
}

void declareFields(CLI::App& app, EditOptions& given) {
    options::texts(app, "--set", given.set,
                   "Set a field: JSON for Booleans, lists and maps, else plain text")
        ->type_name("KEY=VALUE");
    options::texts(app, "--unset", given.unset,
                   "Give a field its default; arguments and variables are worked out anew")
        ->type_name("KEY");
}

void declareStart(CLI::App& app, EditOptions& given) {
    options::texts(app, "--add-arg", given.addArgs, "Start it with this argument too");
    options::texts(app, "--remove-arg", given.removeArgs, "Start it without this argument");
    options::texts(app, "--env", given.environment, "Set an environment variable")
        ->type_name("K=V");
}

void declareLook(CLI::App& app, EditOptions& given) {
    using options::text;
    text(app, "--name", given.newName, "Give it another name; identifier and data stay")
        ->type_name("NEW");
    text(app, "--icon", given.icon, "Another image for the icon")->type_name("FILE");
    text(app, "--label", given.label, "Another text on the icon; an empty one for none");
    text(app, "--label-color", given.labelColor, "Its color")->type_name("RRGGBB");
    options::choice<ambrel::IconLabel::Position>(app, "--label-position", given.labelPosition);
}

} // namespace

Verb editVerb() {
    return {"edit",
            "Change an instance.",
            {"korvane edit Work --add-arg --incognito --env LANG=C",
             "korvane edit Work --label W --label-color FFCC00", "korvane edit Work --name Office",
             "korvane edit Work --set shareUserFolders=false"},
            [](CLI::App& app, const Surroundings& surroundings) -> Action {
                const auto given = std::make_shared<EditOptions>();
                options::instanceName(app, given->name);
                declareFields(app, *given);
                declareStart(app, *given);
                declareLook(app, *given);
                options::asJson(app, given->asJson);
                return [given, &surroundings](const auto&) {
                    return editInstance(*given, surroundings);
                };
            },
            {.severalValues = true}};
}

int editInstance(const EditOptions& options, const Surroundings& surroundings) {
    requireNoContradiction(options);
    const auto& user = surroundings.user;
    const auto record = requireInstance(options.name, user);
    std::optional<ambrel::Path> icon;
    if (options.icon) icon = usablePath(*options.icon, user);
    const auto edited = change(record, wantedBy(options, record, surroundings), user,
                               surroundings.environment, icon);
    tellAbout(edited, surroundings);
    if (options.asJson) json::write(json::instance(edited.record, user), surroundings.results);
    return 0;
}

} // namespace korvane
