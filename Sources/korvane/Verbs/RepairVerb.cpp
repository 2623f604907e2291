#include "korvane/Verbs/RepairVerb.h"

#include "Ambrel/Base/Utf8.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Base/Refusal.h"
#include "Manager/Operations/Repair.h"
#include "Manager/Rules/InstanceLookup.h"
#include "Manager/Rules/UserText.h"
#include "korvane/CommandLine/Options.h"
#include "korvane/Output/JsonOutput.h"
#include "korvane/Output/Messages.h"

#include <memory>
#include <ostream>

namespace korvane {

using Kind = Difference::Kind;

namespace {

struct RepairOptions {
    std::optional<std::string> name;
    std::optional<std::string> runner;
    bool dryRun = false;
    bool asJson = false;
};

/// What is said of a kind: in JSON, and once it is mended.
struct KindWords {
    Kind kind;
    const char* word;
    const char* done; ///< in front of the instance's name, or of the file where there is none
};

constexpr const char* replacedRunner = "Put the runner of this version into";
constexpr const char* wroteInfoPlist = "Wrote the Info.plist of";
constexpr const char* madeEntry = "Brought up to date the desktop entry of";
constexpr const char* removedEntry = "Removed the desktop entry";

constexpr KindWords kindWords[] = {
    {Kind::runnerMissing, "runnerMissing", replacedRunner},
    {Kind::runnerNotRunnable, "runnerNotRunnable", replacedRunner},
    {Kind::runnerDiffers, "runnerDiffers", replacedRunner},
    {Kind::infoPlistMissing, "infoPlistMissing", wroteInfoPlist},
    {Kind::infoPlistDiffers, "infoPlistDiffers", wroteInfoPlist},
    {Kind::entryMissing, "entryMissing", "Made the desktop entry of"},
    {Kind::entryOutdated, "entryOutdated", madeEntry},
    {Kind::entryStray, "entryStray", madeEntry},
    {Kind::entryFormer, "entryFormer", removedEntry},
    {Kind::entryOrphaned, "entryOrphaned", removedEntry},
    {Kind::iconMissing, "iconMissing", ""},
    {Kind::entryTaken, "entryTaken", ""},
    {Kind::entryImpossible, "entryImpossible", ""},
    {Kind::identifierShared, "identifierShared", ""},
    {Kind::bundleUnreadable, "bundleUnreadable", ""},
};

const KindWords& wordsFor(Kind kind) {
    for (const auto& words : kindWords) {
        if (words.kind == kind) return words;
    }
    return kindWords[0];
}

std::string ended(const std::string& sentence) {
    return sentence.ends_with('.') ? sentence : sentence + ".";
}

std::string whatWasDone(const Difference& difference) {
    const std::string subject = difference.entry
                                    ? ambrel::utf8::oneLine(difference.subject)
                                    : inQuotes(difference.record.value().config.displayName);
    return std::string(wordsFor(difference.kind).done) + " " + subject + ".";
}

nlohmann::json jsonFor(const Difference& difference) {
    nlohmann::json object{{"kind", wordsFor(difference.kind).word},
                          {"path", json::text(difference.subject)},
                          {"sentence", json::text(difference.sentence)},
                          {"mendable", difference.isMendable()}};
    if (!difference.record) return object;
    object["name"] = difference.record->config.displayName;
    object["bundleURL"] = json::text(difference.record->bundleURL);
    return object;
}

nlohmann::json jsonFor(const std::vector<Difference>& differences) {
    auto array = nlohmann::json::array();
    for (const auto& difference : differences) array.push_back(jsonFor(difference));
    return array;
}

void writeJson(const RepairPlan& plan, const std::optional<Repaired>& repaired,
               const Surroundings& surroundings) {
    nlohmann::json object{{"differences", jsonFor(plan.differences)}};
    if (repaired) {
        object["repaired"] = jsonFor(repaired->mended);
        auto failures = nlohmann::json::array();
        for (const auto& failure : repaired->failures) {
            failures.push_back(jsonFor(failure.difference));
            failures.back()["reason"] = json::text(failure.reason);
        }
        object["failed"] = failures;
    }
    json::write(object, surroundings.results);
}

void tell(const Repaired& repaired, const Surroundings& surroundings) {
    for (const auto& difference : repaired.mended) say(surroundings, whatWasDone(difference));
    for (const auto& failure : repaired.failures) {
        warn(surroundings, ended(failure.difference.sentence) + " It could not be repaired: " +
                               ended(ambrel::utf8::oneLine(failure.reason)));
    }
}

/// What differs comes before anything is touched.
void tell(const RepairPlan& plan, const Surroundings& surroundings) {
    for (const auto& difference : plan.differences) {
        surroundings.results << ended(difference.sentence) << '\n';
    }
    surroundings.results.flush();
    if (plan.differences.empty()) say(surroundings, "Nothing to repair.");
}

int repairNow(const RepairPlan& plan, bool asJson, const Surroundings& surroundings) {
    const auto repaired = perform(plan, surroundings.user);
    if (asJson) writeJson(plan, repaired, surroundings);
    tell(repaired, surroundings);
    const auto left = plan.differences.size() - repaired.mended.size();
    if (left > 0) throw Refusal(counted(left, "thing") + " could not be repaired.");
    return 0;
}

int repair(const RepairOptions& options, const Surroundings& surroundings) {
    const auto& user = surroundings.user;
    std::optional<ambrel::InstanceRecord> only;
    if (options.name) only = requireInstance(*options.name, user);
    std::optional<ambrel::Path> runner;
    if (options.runner) runner = usablePath(*options.runner, user);
    const auto plan = planRepair(only, runner, user, surroundings.environment);
    if (!options.asJson || plan.differences.empty()) tell(plan, surroundings);
    if (!options.dryRun) return repairNow(plan, options.asJson, surroundings);
    if (options.asJson) writeJson(plan, {}, surroundings);
    if (!plan.differences.empty()) {
        say(surroundings,
            "Repair it with: " + commandLine("repair", options.name
                                                           ? std::vector<std::string>{*options.name}
                                                           : std::vector<std::string>{}));
    }
    return 0;
}

} // namespace

Verb repairVerb() {
    return {"repair",
            "Mend instances that were moved, renamed or removed by hand.",
            {"korvane repair", "korvane repair Work", "korvane repair --dry-run"},
            [](CLI::App& app, const Surroundings& surroundings) -> Action {
                const auto given = std::make_shared<RepairOptions>();
                options::taking(app,
                                options::text(app, "NAME", given->name,
                                              "The instance's name, or its bundle's path; all "
                                              "instances without one"),
                                {Takes::instance});
                options::flag(app, "-n,--dry-run", given->dryRun, "Only say what differs");
                options::text(app, "--runner", given->runner, "The runner that they are to have")
                    ->type_name("FILE");
                options::asJson(app, given->asJson);
                return [given, &surroundings](const auto&) { return repair(*given, surroundings); };
            }};
}

} // namespace korvane
