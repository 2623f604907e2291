#include "korvane/Verbs/OpenVerb.h"

#include "Manager/Base/Quoting.h"
#include "Manager/Operations/Opening.h"
#include "Manager/Rules/InstanceLookup.h"
#include "korvane/Output/Messages.h"
#include "korvane/Verbs/InstanceVerb.h"

namespace korvane {

namespace {

int openInstance(const std::string& name, const Surroundings& surroundings) {
    const auto record = requireInstance(name, surroundings.user);
    open(record, surroundings.user);
    say(surroundings, "Opened " + inQuotes(record.config.displayName) + ".");
    if (record.config.kind != ambrel::ShortcutKind::file) {
        say(surroundings, "See what it writes with: " +
                              commandLine("logs -f", {nameFor(record, surroundings.user)}));
    }
    return 0;
}

} // namespace

Verb openVerb() {
    return instanceVerb("open", "Start an instance and leave it running.", "korvane open Work",
                        openInstance);
}

} // namespace korvane
