#include "korvane/Verbs/MoveVerb.h"

#include "korvane/CommandLine/Options.h"
#include "korvane/Verbs/EditVerb.h"

#include <memory>

namespace korvane {

namespace {

struct MoveOptions {
    std::string name;
    std::string newName;
    bool asJson = false;
};

/// What "korvane edit NAME --name NEW" does.
int rename(const MoveOptions& options, const Surroundings& surroundings) {
    EditOptions edit;
    edit.name = options.name;
    edit.newName = options.newName;
    edit.asJson = options.asJson;
    return editInstance(edit, surroundings);
}

} // namespace

Verb moveVerb() {
    return {
        "mv",
        "Give an instance another name: in short for \"edit NAME --name NEW\".",
        {"korvane mv Work Office"},
        [](CLI::App& app, const Surroundings& surroundings) -> Action {
            const auto given = std::make_shared<MoveOptions>();
            options::instanceName(app, given->name);
            options::text(app, "NEW", given->newName, "What it is called from now on")->required();
            options::asJson(app, given->asJson);
            return [given, &surroundings](const auto&) { return rename(*given, surroundings); };
        }};
}

} // namespace korvane
