#include "korvane/Verbs/DeleteVerb.h"

#include "Ambrel/Base/Utf8.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Operations/Deletion.h"
#include "Manager/Rules/InstanceLookup.h"
#include "korvane/CommandLine/Options.h"
#include "korvane/Output/Messages.h"
#include "korvane/Output/Remedies.h"

#include <memory>

namespace korvane {

using ambrel::UserData;

namespace {

struct DeleteOptions {
    std::string name;
    bool data = false;
    bool yes = false;
    bool noInput = false;
};

/// Returns false when the user says no.
bool agreed(const DeleteOptions& options, const DeletionPlan& plan,
            const Surroundings& surroundings) {
    if (options.yes) return true;
    const auto home = ambrel::utf8::oneLine(plan.home.value_or(""));
    // A question that goes into a file is not seen either.
    const bool canAsk = surroundings.inputIsTerminal && surroundings.messagesAreTerminal;
    if (!canAsk || options.noInput) {
        throw Refusal("Deleting the data in " + home +
                      " cannot be undone, and nobody can be asked. Say so with --yes.");
    }
    return confirm(surroundings, "Delete all data in " + home + " for good?");
}

void tellAbout(const Deleted& deleted, const Surroundings& surroundings) {
    if (deleted.wasLink) {
        say(surroundings, "Deleted the link " +
                              ambrel::utf8::oneLine(
                                  ambrel::paths::withoutTrailingSlashes(deleted.record.bundleURL)) +
                              "; the instance that it leads to is as it was.");
    } else {
        say(surroundings, "Deleted " + inQuotes(deleted.record.config.displayName) + ".");
    }
    tell(surroundings, deleted.notices);
    if (deleted.keptHome) {
        say(surroundings, "Its data stays in " + ambrel::utf8::oneLine(*deleted.keptHome) + ".");
    }
    if (deleted.removedHome) {
        say(surroundings,
            "Deleted its data in " + ambrel::utf8::oneLine(*deleted.removedHome) + ".");
    }
}

int deleteInstance(const DeleteOptions& options, const Surroundings& surroundings) {
    const auto record = requireInstance(options.name, surroundings.user);
    const auto plan = planDeletion(record, options.data ? UserData::remove : UserData::keep,
                                   surroundings.user, Measure::no);
    const bool mayGo = !options.data || agreed(options, plan, surroundings);
    if (!mayGo) throw Refusal("Nothing was deleted.");
    const auto deleted = perform(plan, surroundings.user);
    tellAbout(deleted, surroundings);
    return 0;
}

} // namespace

Verb deleteVerb() {
    return {
        "delete",
        "Delete an instance; its data only with --data.",
        {"korvane delete Work", "korvane delete Work --data", "korvane delete Work --data --yes"},
        [](CLI::App& app, const Surroundings& surroundings) -> Action {
            const auto given = std::make_shared<DeleteOptions>();
            options::instanceName(app, given->name);
            options::flag(app, "--data", given->data, "Delete its home with all data too");
            options::flag(app, "-y,--yes", given->yes, "Do not ask");
            options::flag(app, "--no-input", given->noInput, "Refuse instead of asking");
            return [given, &surroundings](const auto&) {
                return deleteInstance(*given, surroundings);
            };
        }};
}

} // namespace korvane
