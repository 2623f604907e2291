#include "korvane/Verbs/DeleteVerb.h"

#include "Ambrel/Base/Utf8.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Operations/Deletion.h"
#include "korvane/CommandLine/Options.h"
#include "korvane/Output/Messages.h"
#include "korvane/Output/Remedies.h"
#include "korvane/Verbs/InstanceVerb.h"

#include <map>
#include <memory>

namespace korvane {

using ambrel::UserData;

namespace {

struct DeleteOptions {
    std::vector<std::string> names;
    bool data = false;
    bool yes = false;
    bool noInput = false;
};

void requireAnswer(const DeleteOptions& options, const DeletionPlan& plan,
                   const Surroundings& surroundings) {
    // A question that goes into a file is not seen either.
    const bool canAsk = surroundings.inputIsTerminal && surroundings.messagesAreTerminal;
    if (!options.data || options.yes || (canAsk && !options.noInput)) return;
    throw Refusal("Deleting the data in " + ambrel::utf8::oneLine(plan.home.value_or("")) +
                  " cannot be undone, and nobody can be asked. Say so with --yes.");
}

/// Returns false when the user says no.
bool agreed(const DeleteOptions& options, const DeletionPlan& plan,
            const Surroundings& surroundings) {
    if (!options.data || options.yes) return true;
    return confirm(surroundings, "Delete all data in " +
                                     ambrel::utf8::oneLine(plan.home.value_or("")) + " for good?");
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

void carryOut(const DeletionPlan& plan, const DeleteOptions& options,
              const Surroundings& surroundings) {
    if (!agreed(options, plan, surroundings)) {
        throw Refusal("Nothing was deleted of " + inQuotes(plan.record.config.displayName) + ".");
    }
    const auto deleted = perform(plan, surroundings.user);
    tellAbout(deleted, surroundings);
}

int deleteInstances(const DeleteOptions& options, const Surroundings& surroundings) {
    const auto records = requireInstances(options.names, surroundings);
    std::map<ambrel::Path, DeletionPlan> plans;
    for (const auto& record : records) {
        auto plan = planDeletion(record, options.data ? UserData::remove : UserData::keep,
                                 surroundings.user, Measure::no);
        requireAnswer(options, plan, surroundings);
        plans.emplace(record.bundleURL, std::move(plan));
    }
    return forEach(records, surroundings, [&](const ambrel::InstanceRecord& record) {
        carryOut(plans.at(record.bundleURL), options, surroundings);
    });
}

} // namespace

Verb deleteVerb() {
    return {"delete",
            "Delete instances; their data only with --data.",
            {"korvane delete Work", "korvane delete Work --data",
             "korvane delete Work Private --data --yes"},
            [](CLI::App& app, const Surroundings& surroundings) -> Action {
                const auto given = std::make_shared<DeleteOptions>();
                options::instanceNames(app, given->names);
                options::flag(app, "--data", given->data, "Delete its home with all data too");
                options::flag(app, "-y,--yes", given->yes, "Do not ask");
                options::flag(app, "--no-input", given->noInput, "Refuse instead of asking");
                return [given, &surroundings](const auto&) {
                    return deleteInstances(*given, surroundings);
                };
            }};
}

} // namespace korvane
