#include "korvane/Verbs/OpenVerb.h"

#include "Manager/Base/Quoting.h"
#include "Manager/Operations/Opening.h"
#include "Manager/Rules/InstanceLookup.h"
#include "korvane/CommandLine/Options.h"
#include "korvane/Output/Messages.h"

#include <memory>

namespace korvane {

namespace {

int openInstance(const std::string& name, const std::vector<std::string>& words,
                 const Surroundings& surroundings) {
    const auto record = requireInstance(name, surroundings.user);
    open(record, surroundings.user, words);
    say(surroundings, "Opened " + inQuotes(record.config.displayName) + ".");
    if (record.config.kind != ambrel::ShortcutKind::file) {
        say(surroundings, "See what it writes with: " +
                              commandLine("logs -f", {nameFor(record, surroundings.user)}));
    }
    return 0;
}

} // namespace

Verb openVerb() {
    return {"open",
            "Start an instance and leave it running.",
            {"korvane open Work", "korvane open Work -- letter.txt https://example.org/"},
            [](CLI::App& app, const Surroundings& surroundings) -> Action {
                const auto instance = std::make_shared<std::string>();
                options::instanceName(app, *instance);
                return [=, &surroundings](const std::vector<std::string>& words) {
                    return openInstance(*instance, words, surroundings);
                };
            },
            {.trailingAfter = 1}};
}

} // namespace korvane
