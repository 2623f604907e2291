#include "korvane/Verbs/EditVerb.h"

#include "Ambrel/Base/Utf8.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Operations/Editing.h"
#include "Manager/Rules/InstanceLookup.h"
#include "Manager/Rules/UserText.h"
#include "korvane/CommandLine/Options.h"
#include "korvane/CommandLine/UsageError.h"
#include "korvane/Output/Messages.h"
#include "korvane/Output/Remedies.h"
#include "korvane/Verbs/ConfigEdit.h"

#include <algorithm>
#include <memory>

namespace korvane {

using ambrel::InstanceConfig;
using ambrel::InstanceRecord;

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

InstanceConfig wantedBy(const EditOptions& options, const InstanceRecord& record,
                        const ambrel::UserPlaces& user) {
    auto config = record.config;
    for (const auto& key : options.unset) edit::unset(config, key);
    for (const auto& assignment : options.set) edit::set(config, assignment, user);
    return config;
}

/// Told after that the instance was changed.
bool isOnNewHome(const Notice& notice) { return notice.kind == Notice::Kind::homeIsLong; }

void tellAbout(const Edited& edited, const Surroundings& surroundings) {
    const auto& before = edited.before.config;
    for (const auto& notice : edited.notices) {
        if (!isOnNewHome(notice)) tell(surroundings, notice);
    }
    say(surroundings, "Changed " + inQuotes(before.displayName) + ".");
    for (const auto& notice : edited.notices) {
        if (isOnNewHome(notice)) tell(surroundings, notice);
    }
    if (edited.homeChanged) {
        say(surroundings, "Its data stays in " + ambrel::utf8::oneLine(before.instanceHome) +
                              "; from now on it uses " +
                              ambrel::utf8::oneLine(edited.record.config.instanceHome) + ".");
    }
    if (edited.iconIsOutdated) {
        say(surroundings, "The icon itself is drawn anew only by: korvane create … --replace");
    }
    say(surroundings,
        "See it with: " + commandLine("show", {nameFor(edited.record, surroundings.user)}));
}

int editInstance(const EditOptions& options, const Surroundings& surroundings) {
    requireNoContradiction(options);
    const auto record = requireInstance(options.name, surroundings.user);
    tellAbout(change(record, wantedBy(options, record, surroundings.user), surroundings.user),
              surroundings);
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
