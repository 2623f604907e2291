#include "korvane/Verbs/RegisterVerb.h"

#include "Manager/Base/Quoting.h"
#include "Manager/Operations/Registering.h"
#include "Manager/Rules/InstanceLookup.h"
#include "korvane/Output/JsonOutput.h"
#include "korvane/Output/Messages.h"
#include "korvane/Verbs/InstanceVerb.h"

#include <ostream>

namespace korvane {

namespace {

int showInstance(const std::string& name, bool asJson, const Surroundings& surroundings) {
    const auto record = requireInstance(name, surroundings.user);
    const auto entry = registerInstance(record, surroundings.user, surroundings.environment);
    say(surroundings, "The desktop shows " + inQuotes(record.config.displayName) + ".");
    if (asJson) {
        json::write(json::instance(record, surroundings.user), surroundings.results);
    } else {
        surroundings.results << entry.file << '\n';
    }
    return 0;
}

} // namespace

Verb registerVerb() {
    return instanceVerbWithJson("register", "Show an instance in the desktop's menus and docks.",
                                "korvane register Work", showInstance);
}

} // namespace korvane
