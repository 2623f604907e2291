#include "korvane/Verbs/UnregisterVerb.h"

#include "Manager/Base/Quoting.h"
#include "Manager/Operations/Registering.h"
#include "Manager/Rules/InstanceLookup.h"
#include "korvane/Output/JsonOutput.h"
#include "korvane/Output/Messages.h"
#include "korvane/Verbs/InstanceVerb.h"

namespace korvane {

namespace {

int hideInstance(const std::string& name, bool asJson, const Surroundings& surroundings) {
    const auto record = requireInstance(name, surroundings.user);
    const auto shown = inQuotes(record.config.displayName);
    const bool wasShown = unregisterInstance(record, surroundings.user).has_value();
    if (asJson) json::write(json::instance(record, surroundings.user), surroundings.results);
    if (!wasShown) {
        say(surroundings, shown + " has no desktop entry.");
        return 0;
    }
    say(surroundings, "The desktop no longer shows " + shown + ".");
    say(surroundings,
        "Show it again with: " + commandLine("register", {nameFor(record, surroundings.user)}));
    return 0;
}

} // namespace

Verb unregisterVerb() {
    return instanceVerbWithJson("unregister",
                                "Take an instance out of the desktop's menus and docks.",
                                "korvane unregister Work", hideInstance);
}

} // namespace korvane
