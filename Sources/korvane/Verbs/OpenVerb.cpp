#include "korvane/Verbs/OpenVerb.h"

#include "Manager/Base/Quoting.h"
#include "Manager/Operations/Opening.h"
#include "Manager/Rules/InstanceLookup.h"
#include "Manager/Rules/SiteAddress.h"
#include "korvane/CommandLine/Options.h"
#include "korvane/Output/Messages.h"
#include "korvane/Output/Remedies.h"
#include "korvane/Verbs/InstanceVerb.h"

#include <memory>

namespace korvane {

namespace {

std::string sentenceOn(Opened opened, const std::string& name, ambrel::ShortcutKind kind) {
    switch (opened) {
    case Opened::runs:
    case Opened::handedOn:
        break;
    case Opened::ranAlready:
        if (kind == ambrel::ShortcutKind::web) {
            return name + " is running already: its window was asked to come to the front.";
        }
        return name +
               " is running already. This start has ended, as one does that hands over to it.";
    case Opened::ended:
        return name + " has ended already, with status 0.";
    }
    return "Opened " + name + ".";
}

void openInstance(const ambrel::InstanceRecord& record, const std::vector<std::string>& words,
                  const Surroundings& surroundings) {
    const auto opened = open(record, surroundings.user, {.words = words});
    say(surroundings, sentenceOn(opened, inQuotes(record.config.displayName), record.config.kind));
    if (const auto obstacle = addressObstacle(record, surroundings.user)) {
        tell(surroundings, *obstacle);
    }
    if (opened == Opened::handedOn) return;
    const bool isOver = opened == Opened::ended;
    const auto command =
        commandLine(isOver ? "logs" : "logs -f", {nameFor(record, surroundings.user)});
    say(surroundings,
        (isOver ? "See what it wrote with: " : "See what it writes with: ") + command);
}

int openInstances(const std::vector<std::string>& names, const std::vector<std::string>& words,
                  const Surroundings& surroundings) {
    const auto records = requireInstances(names, surroundings);
    for (const auto& record : records) requireOpenable(record, surroundings.user);
    return forEach(records, surroundings,
                   [&](const auto& record) { openInstance(record, words, surroundings); });
}

} // namespace

Verb openVerb() {
    return {"open",
            "Start instances and leave them running.",
            {"korvane open Work", "korvane open Work Private",
             "korvane open Work -- letter.txt https://example.org/"},
            [](CLI::App& app, const Surroundings& surroundings) -> Action {
                const auto names = std::make_shared<std::vector<std::string>>();
                options::instanceNames(app, *names);
                return [names, &surroundings](const std::vector<std::string>& words) {
                    return openInstances(*names, words, surroundings);
                };
            },
            {.trailingAfter = 1}};
}

} // namespace korvane
