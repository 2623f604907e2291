#include "korvane/Verbs/RegisterVerb.h"

#include "Manager/Base/Quoting.h"
#include "Manager/Operations/Registering.h"
#include "Manager/Rules/InstanceLookup.h"
#include "korvane/Output/Messages.h"
#include "korvane/Verbs/InstanceVerb.h"

#include <ostream>

namespace korvane {

namespace {

int showInstance(const std::string& name, const Surroundings& surroundings) {
    const auto record = requireInstance(name, surroundings.user);
    const auto entry = registerInstance(record, surroundings.user, surroundings.environment);
    say(surroundings, "The desktop shows " + inQuotes(record.config.displayName) + ".");
    surroundings.results << entry.file << '\n';
    return 0;
}

} // namespace

Verb registerVerb() {
    return instanceVerb("register", "Show an instance in the desktop's menus and docks.",
                        "korvane register Work", showInstance);
}

} // namespace korvane
