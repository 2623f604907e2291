#include "Manager/Operations/Creation.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Base/Refusal.h"
#include "Manager/Desktop/Presence.h"
#include "Manager/Files/IconConversion.h"
#include "Manager/Files/StagingFolder.h"
#include "Manager/Operations/ApplicationForInstance.h"
#include "Manager/Operations/CreationNotices.h"
#include "Manager/Operations/IconOrigin.h"
#include "Manager/Operations/Unchanged.h"
#include "Manager/Rules/InstanceHome.h"
#include "Manager/Rules/InstanceLookup.h"
#include "Manager/Rules/Running.h"

namespace korvane {

using ambrel::Environment;
using ambrel::InstanceRecord;
using ambrel::Path;
using ambrel::UserPlaces;
using ambrel::WrapperFactory;
using Kind = Refusal::Kind;

namespace {

void requireAsPlanned(const CreationPlan& plan, const UserPlaces& user,
                      const Environment& environment) {
    const auto instances = instancesWith(*plan.wrapper.outputDir, user);
    const auto found = requirePossible(plan, instances, user, environment);
    if (!found && !plan.replaced) return;
    if (found && plan.replaced && isUnchanged(*plan.replaced, *found)) return;
    throw placeChanged(plan.bundle);
}

/// A bundle that is built, and whether it has the icon of the one that it replaces.
struct Built {
    Path bundle;
    bool hasKeptIcon = false;
};

/// The icon that was chosen for the replaced instance, unless another one is chosen now.
IconSource keptIcon(const CreationPlan& plan, const Path& scratch) {
    if (!plan.replaced || plan.wrapper.customIcon) return {};
    return iconSourceOf(*plan.replaced, plan.wrapper.iconLabel, scratch);
}

Path createWrapper(const WrapperFactory::Request& wrapper, const std::optional<Path>& runner,
                   const UserPlaces& user) {
    try {
        return WrapperFactory(user, runner).create(wrapper);
    } catch (const WrapperFactory::FactoryError& error) {
        if (error.kind == WrapperFactory::FactoryError::Kind::badTarget) {
            throw Refusal(Kind::unreadableApplication, error.subject, error.description());
        }
        if (error.kind != WrapperFactory::FactoryError::Kind::runnerNotFound) throw;
        throw Refusal(Kind::unusableRunner, "", error.description(), Remedy::chooseRunner);
    } catch (const ambrel::WrapperGenerator::GenError& error) {
        const bool isRunner = error.kind == ambrel::WrapperGenerator::GenError::Kind::runnerMissing;
        throw Refusal(isRunner ? Kind::unusableRunner : Kind::unreadableApplication, error.subject,
                      ambrel::utf8::oneLine(error.description()));
    }
}

Built createIn(const Path& folder, const CreationPlan& plan, const UserPlaces& user) {
    auto wrapper = plan.wrapper;
    wrapper.outputDir = folder;
    const auto kept = keptIcon(plan, folder);
    if (kept.picture) {
        wrapper.customIcon = kept.picture;
    } else if (wrapper.customIcon) {
        wrapper.customIcon = iconFileOf(*wrapper.customIcon, folder);
    }
    const auto built = createWrapper(wrapper, plan.request.runner, user);
    if (kept.isDrawn) {
        ambrel::fileSystem::replace(ambrel::BundleLayout{built}.icon(),
                                    ambrel::fileSystem::read(*kept.picture));
    }
    return {built, kept.picture.has_value()};
}

/// Building takes its time, and what came to the place in it is not removed unseen: it is looked at
/// once nobody else can reach it at its path, and put back where it is not what was to be replaced.
void replace(StagingFolder& staging, const Path& built, const CreationPlan& plan,
             const UserPlaces& user) {
    requireNotRunning(*plan.replaced, user);
    staging.exchange(built, plan.bundle);
    const auto old = ambrel::InstanceRegistry(user).recordFor(built);
    if (old && isUnchanged(*plan.replaced, {plan.bundle, old->config})) return staging.mayGo();
    try {
        staging.exchange(built, plan.bundle);
    } catch (const ambrel::FileError&) {
        staging.leave();
        throw placeChanged(plan.bundle, ", and lies in " + ambrel::utf8::oneLine(built));
    }
    throw placeChanged(plan.bundle);
}

/// Another may have come to the place since it was looked at.
void putInPlace(StagingFolder& staging, const Path& built, const Path& place) {
    try {
        staging.putInPlace(built, place);
    } catch (const ambrel::FileError&) {
        if (ambrel::fileSystem::kindOf(place)) throw placeChanged(place);
        throw;
    }
}

InstanceRecord requireReadable(const Path& built, const Path& place, const UserPlaces& user) {
    const auto record = ambrel::InstanceRegistry(user).recordFor(built);
    if (record) return {place, record->config};
    throw Refusal(Kind::notCreated, place, "The new instance cannot be read back.");
}

Created buildIn(StagingFolder& staging, const CreationPlan& plan, const UserPlaces& user) {
    const auto [built, hasKeptIcon] = createIn(staging.path(), plan, user);
    Created created{.record = requireReadable(built, plan.bundle, user),
                    .replaced = plan.replaced,
                    .reference = plan.reference,
                    .iconKept = hasKeptIcon,
                    .profile = {},
                    .adopted = {},
                    .notices = {}};
    const auto& config = created.record.config;
    const auto home = usableHome(config, user);
    created.homeExisted = hasHome(config) && home && ambrel::fileSystem::exists(*home);
    ambrel::NewFolders folders;
    makeHome(config, user, folders);
    if (plan.replaced) {
        replace(staging, built, plan, user);
    } else {
        putInPlace(staging, built, plan.bundle);
    }
    folders.keep();
    // The new instance is in place: what cannot be removed of the old one is no failure any more.
    auto remains = staging.removeOrTell(std::string("Remains of ") +
                                        (plan.replaced ? "what was replaced" : "making it"));
    if (remains) created.notices.push_back(std::move(*remains));
    if (plan.replaced) forgetHome(plan.replaced->config, user);
    // Only now: what lies in a new home would keep it from being removed after a failure.
    append(created.notices, furnishHome(config, user));
    return created;
}

Created build(const CreationPlan& plan, const UserPlaces& user) {
    StagingFolder staging(*plan.wrapper.outputDir);
    try {
        return buildIn(staging, plan, user);
    } catch (const ambrel::FileError& error) {
        throw staging.outwards(error);
    }
}

Created make(const CreationPlan& plan, const UserPlaces& user) {
    auto created = build(plan, user);
    if (plan.start) created.profile = plan.start->profile;
    append(created.notices, noticesOn(plan, created.record, user));
    append(created.notices, presence::created(created.record, user));
    append(created.notices, noticesOnOrigin(plan, created));
    return created;
}

CreateRequest forApplication(CreateRequest request, const ApplicationForInstance& application) {
    request.program.reset();
    request.targetApp = application.adopted().bundle;
    return request;
}

void tellOfAdoption(const Adopted& adopted, Created& created) {
    created.adopted = adopted.bundle;
    created.notices.insert(
        created.notices.begin(),
        {.kind = Notice::Kind::programAdopted,
         .severity = Notice::Severity::information,
         .subject = adopted.bundle,
         .sentence = "Adopted " + ambrel::utf8::oneLine(adopted.program) + " as the application " +
                     inQuotes(adopted.name) +
                     (adopted.hasIcon ? "." : ", without an icon: no picture was found for it.")});
}

} // namespace

Created perform(const CreationPlan& plan, const UserPlaces& user, const Environment& environment) {
    requireAsPlanned(plan, user, environment);
    return make(plan, user);
}

Created create(const CreateRequest& request, const UserPlaces& user,
               const Environment& environment) {
    if (!request.program) return make(planCreation(request, user, environment), user);
    requireSensible(request);
    ApplicationForInstance application(*request.program, user, environment);
    auto created =
        make(planCreation(forApplication(request, application), user, environment), user);
    application.keep();
    if (!application.adopted().existed) tellOfAdoption(application.adopted(), created);
    return created;
}

} // namespace korvane
