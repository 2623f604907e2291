#include "korvane/Verbs/RegisterVerbs.h"

#include "Ambrel/Base/Utf8.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Desktop/Registration.h"
#include "Manager/Rules/InstanceLookup.h"
#include "korvane/CommandLine/Options.h"
#include "korvane/Output/Messages.h"

#include <ostream>

namespace korvane {

namespace {

int registerInstance(const std::string& name, const Surroundings& surroundings) {
    const auto record = requireInstance(name, surroundings.user);
    registration::requireFree(record.config.bundleId, record.bundleURL, surroundings.user,
                              surroundings.environment,
                              "An instance gets another identifier with: korvane create … "
                              "--replace --bundle-id ID");
    const auto entry = registration::add(record, surroundings.user);
    say(surroundings, "The desktop shows " + inQuotes(record.config.displayName) + ".");
    surroundings.results << entry.file << '\n';
    return 0;
}

int unregisterInstance(const std::string& name, const Surroundings& surroundings) {
    const auto record = requireInstance(name, surroundings.user);
    const auto entry = registration::findEntry(record, surroundings.user);
    if (!entry) {
        say(surroundings, inQuotes(record.config.displayName) + " has no desktop entry.");
        return 0;
    }
    registration::remove(*entry, surroundings.user);
    say(surroundings, "The desktop no longer shows " + inQuotes(record.config.displayName) + ".");
    say(surroundings,
        "Show it again with: " + commandLine("register", {nameFor(record, surroundings.user)}));
    return 0;
}

Verb verbFor(std::string name, std::string summary, std::string example,
             const std::function<int(const std::string&, const Surroundings&)>& action) {
    return {std::move(name),
            std::move(summary),
            {std::move(example)},
            [action](CLI::App& app, const Surroundings& surroundings) -> Action {
                const auto instance = std::make_shared<std::string>();
                options::instanceName(app, *instance);
                return [=, &surroundings](const auto&) { return action(*instance, surroundings); };
            }};
}

} // namespace

Verb registerVerb() {
    return verbFor("register", "Show an instance in the desktop's menus and docks.",
                   "korvane register Work", registerInstance);
}

Verb unregisterVerb() {
    return verbFor("unregister", "Take an instance out of the desktop's menus and docks.",
                   "korvane unregister Work", unregisterInstance);
}

} // namespace korvane
