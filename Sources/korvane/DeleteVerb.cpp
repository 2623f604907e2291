#include "korvane/DeleteVerb.h"

#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Support/Utf8.h"
#include "korvane/DataSafety.h"
#include "korvane/FolderRelation.h"
#include "korvane/Instances.h"
#include "korvane/ManagerError.h"
#include "korvane/Messages.h"
#include "korvane/Options.h"

namespace korvane {

using ambrel::InstanceRecord;
using ambrel::InstanceRegistry;
using ambrel::Path;
using ambrel::UserData;

namespace {

struct DeleteOptions {
    std::string name;
    bool data = false;
    bool yes = false;
    bool noInput = false;
};

bool exists(const Path& path) { return ambrel::fileSystem::kindOf(path).has_value(); }

/// Returns false when the user says no.
bool agreed(const DeleteOptions& options, const Path& home, const Surroundings& surroundings) {
    if (options.yes || !exists(home)) return true;
    if (!surroundings.inputIsTerminal || options.noInput) {
        throw Refusal("Deleting the data in " + ambrel::utf8::oneLine(home) +
                      " cannot be undone, and nobody can be asked. Say so with --yes.");
    }
    return confirm(surroundings,
                   "Delete all data in " + ambrel::utf8::oneLine(home) + " for good?");
}

int deleteBundle(const InstanceRecord& record, const Surroundings& surroundings) {
    InstanceRegistry().remove(record, UserData::keep);
    say(surroundings, "Deleted " + inQuotes(record.config.displayName) + ".");
    const auto home = usableHome(record.config);
    if (home && exists(*home)) {
        say(surroundings, "Its data stays in " + ambrel::utf8::oneLine(*home) + ".");
    }
    return 0;
}

int deleteWithData(const InstanceRecord& record, const DeleteOptions& options,
                   const Surroundings& surroundings) {
    const Path folder{ambrel::paths::deletingLastComponent(record.bundleURL)};
    requireDeletableData(record, instancesWith(folder));
    const auto home = usableHome(record.config).value_or("");
    if (!agreed(options, home, surroundings)) throw Refusal("Nothing was deleted.");
    // A home that is a link is removed as a link; what it leads to is looked at afterwards.
    const auto data = home.empty() ? home : folders::canonical(home);
    InstanceRegistry().remove(record, UserData::remove);
    say(surroundings, "Deleted " + inQuotes(record.config.displayName) + ".");
    for (const auto& place : {home, data}) {
        if (place.empty() || !exists(place)) continue;
        throw Refusal("Its data could not be deleted and is still in " +
                      ambrel::utf8::oneLine(place) + ".");
    }
    if (!home.empty())
        say(surroundings, "Deleted its data in " + ambrel::utf8::oneLine(home) + ".");
    return 0;
}

} // namespace

Verb deleteVerb() {
    return {
        "delete",
        "Delete an instance; its data only with --data.",
        {"korvane delete Work", "korvane delete Work --data", "korvane delete Work --data --yes"},
        [](CLI::App& app, const Surroundings& surroundings) -> Action {
            const auto given = std::make_shared<DeleteOptions>();
            options::text(app, "NAME", given->name, "The instance's name, or its bundle's path")
                ->required();
            options::flag(app, "--data", given->data, "Delete its home with all data too");
            options::flag(app, "-y,--yes", given->yes, "Do not ask");
            options::flag(app, "--no-input", given->noInput, "Refuse instead of asking");
            return [given, &surroundings](const auto&) {
                const auto record = requireInstance(given->name);
                return given->data ? deleteWithData(record, *given, surroundings)
                                   : deleteBundle(record, surroundings);
            };
        }};
}

} // namespace korvane
