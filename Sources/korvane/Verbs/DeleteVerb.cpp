#include "korvane/Verbs/DeleteVerb.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Manager/Base/ManagerError.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Files/StagingFolder.h"
#include "Manager/Rules/DataSafety.h"
#include "Manager/Rules/InstanceLookup.h"
#include "korvane/CommandLine/Options.h"
#include "korvane/Output/Messages.h"
#include "korvane/Verbs/DesktopPresence.h"

#include <memory>

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
    if (options.yes) return true;
    // A question that goes into a file is not seen either.
    const bool canAsk = surroundings.inputIsTerminal && surroundings.messagesAreTerminal;
    if (!canAsk || options.noInput) {
        throw Refusal("Deleting the data in " + ambrel::utf8::oneLine(home) +
                      " cannot be undone, and nobody can be asked. Say so with --yes.");
    }
    return confirm(surroundings,
                   "Delete all data in " + ambrel::utf8::oneLine(home) + " for good?");
}

std::unique_ptr<StagingFolder> movedAside(const Path& bundle) {
    try {
        auto staging =
            std::make_unique<StagingFolder>(Path(ambrel::paths::deletingLastComponent(bundle)));
        ambrel::fileSystem::move(
            bundle, ambrel::paths::join(staging->path(), ambrel::paths::lastComponent(bundle)));
        return staging;
    } catch (const ambrel::FileError& error) {
        throw Refusal("Cannot delete " + ambrel::utf8::oneLine(bundle) + ". " +
                      error.description());
    }
}

/// Moves the bundle aside in one step before anything in it is removed, so that a failure leaves
/// it whole. A link to a bundle is no bundle: it goes by itself.
void removeBundle(const InstanceRecord& record, const Surroundings& surroundings) {
    const Path bundle{ambrel::paths::withoutTrailingSlashes(record.bundleURL)};
    if (ambrel::fileSystem::kindOf(bundle) == ambrel::fileSystem::ItemKind::symbolicLink) {
        ambrel::fileSystem::removeItem(bundle);
        say(surroundings, "Deleted the link " + ambrel::utf8::oneLine(bundle) +
                              "; the instance that it leads to is as it was.");
        return;
    }
    const auto entry = registration::findEntry(record, surroundings.user);
    const auto staging = movedAside(bundle);
    const auto hidden = staging->path();
    say(surroundings, "Deleted " + inQuotes(record.config.displayName) + ".");
    presence::deleted(entry, surroundings);
    try {
        staging->remove();
    } catch (const ambrel::FileError& error) {
        warn(surroundings, "Its remains could not be removed and lie in " +
                               ambrel::utf8::oneLine(hidden) + ". " + error.description());
    }
}

int deleteBundle(const InstanceRecord& record, const Surroundings& surroundings) {
    removeBundle(record, surroundings);
    const auto home = usableHome(record.config, surroundings.user);
    if (home && exists(*home)) {
        say(surroundings, "Its data stays in " + ambrel::utf8::oneLine(*home) + ".");
    }
    return 0;
}

int deleteWithData(const InstanceRecord& record, const DeleteOptions& options,
                   const Surroundings& surroundings) {
    const Path folder{ambrel::paths::deletingLastComponent(record.bundleURL)};
    requireDeletableData(record, instancesWith(folder, surroundings.user), surroundings.user);
    const auto home = usableHome(record.config, surroundings.user).value_or("");
    if (!agreed(options, home, surroundings)) throw Refusal("Nothing was deleted.");
    const bool hadData = !home.empty() && exists(home);
    removeBundle(record, surroundings);
    InstanceRegistry(surroundings.user)
        .remove(record, UserData::remove); // the bundle is gone: the data follows
    if (!hadData) return 0;
    if (exists(home)) {
        throw Refusal("Its data could not be deleted and is still in " +
                      ambrel::utf8::oneLine(home) + ".");
    }
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
            options::instanceName(app, given->name);
            options::flag(app, "--data", given->data, "Delete its home with all data too");
            options::flag(app, "-y,--yes", given->yes, "Do not ask");
            options::flag(app, "--no-input", given->noInput, "Refuse instead of asking");
            return [given, &surroundings](const auto&) {
                const auto record = requireInstance(given->name, surroundings.user);
                return given->data ? deleteWithData(record, *given, surroundings)
                                   : deleteBundle(record, surroundings);
            };
        }};
}

} // namespace korvane
