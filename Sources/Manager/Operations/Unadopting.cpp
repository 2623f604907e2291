#include "Manager/Operations/Unadopting.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Base/Refusal.h"
#include "Manager/Desktop/KnownInstances.h"
#include "Manager/Files/StagingFolder.h"
#include "Manager/Programs/ProgramSearch.h"
#include "Manager/Programs/StartPlan.h"
#include "Manager/Rules/BundlePlace.h"
#include "Manager/Rules/InstanceLookup.h"

#include <memory>

namespace korvane {

using ambrel::AppBundle;
using ambrel::Path;
using ambrel::UserPlaces;
using Kind = Refusal::Kind;
namespace fileSystem = ambrel::fileSystem;
namespace paths = ambrel::paths;

namespace {

AppBundle requireKnown(const std::string& text, const UserPlaces& user,
                       const ambrel::Environment& environment) {
    auto meant = requireMeantProgram(text, KnownApplications::areMeant, user, environment);
    if (auto* app = std::get_if<AppBundle>(&meant)) return std::move(*app);
    throw Refusal(Kind::unknownApplication, text,
                  "No application was made of " + inQuotes(std::get<Adoption>(meant).name) + ".",
                  Remedy::listApplications);
}

void requireMadeByAdopting(const AppBundle& app, const Path& bundle) {
    const auto shown = ambrel::utf8::oneLine(bundle);
    if (isLink(bundle)) {
        throw Refusal(Kind::notAdopted, bundle, shown + " is a link, and stays.");
    }
    if (!isAdopted(app)) {
        throw Refusal(Kind::notAdopted, bundle,
                      shown + " was not made by adopting a program, and stays.");
    }
    if (const auto foreign = findForeignItem(app)) {
        throw Refusal(Kind::notAdopted, bundle,
                      shown + " stays: it holds " + ambrel::utf8::oneLine(*foreign) +
                          ", which was not made by adopting a program.");
    }
}

void requireUnneeded(const Path& bundle, const UserPlaces& user) {
    std::vector<std::string> names;
    const auto beside = instancesWith(Path(paths::deletingLastComponent(bundle)), user);
    for (const auto& record : knownInstances(findElsewhere(user), user, beside)) {
        const bool isStarted = record.config.kind == ambrel::ShortcutKind::app &&
                               fileSystem::isSameItem(record.config.targetAppURL(), bundle);
        if (isStarted) names.push_back(nameFor(record, user));
    }
    if (names.empty()) return;
    throw Refusal(Kind::applicationNeeded, bundle,
                  "Instances are made of the application " + inQuotes(paths::stem(bundle)) + ".",
                  Remedy::deleteFirst, std::move(names));
}

/// Out of the way in one step, so that a failure leaves it whole.
std::unique_ptr<StagingFolder> movedAside(const Path& bundle) {
    try {
        auto staging = std::make_unique<StagingFolder>(Path(paths::deletingLastComponent(bundle)));
        fileSystem::move(bundle, paths::join(staging->path(), paths::lastComponent(bundle)));
        return staging;
    } catch (const ambrel::FileError& error) {
        throw Refusal(Kind::notRemoved, bundle,
                      "Cannot remove " + ambrel::utf8::oneLine(bundle) + ". " +
                          error.description());
    }
}

} // namespace

Unadopted unadopt(const std::string& application, const UserPlaces& user,
                  const ambrel::Environment& environment) {
    const auto app = requireKnown(application, user, environment);
    const Path bundle{paths::withoutTrailingSlashes(app.url)};
    requireMadeByAdopting(app, bundle);
    requireUnneeded(bundle, user);
    const auto staging = movedAside(bundle);
    Unadopted done{.bundle = bundle, .name = std::string(paths::stem(bundle)), .notices = {}};
    auto remains = staging->removeOrTell("Its remains could not be removed and");
    if (remains) done.notices.push_back(std::move(*remains));
    return done;
}

} // namespace korvane
