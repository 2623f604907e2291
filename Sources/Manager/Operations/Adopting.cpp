#include "Manager/Operations/Adopting.h"

#include "Ambrel/Application/AppCatalog.h"
#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Wrapper/WrapperFactory.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Base/Refusal.h"
#include "Manager/Files/StagingFolder.h"
#include "Manager/Programs/Adoption.h"
#include "Manager/Programs/ProgramSearch.h"
#include "Manager/Programs/StartPlan.h"
#include "Manager/Rules/UserText.h"

namespace korvane {

using ambrel::AppCatalog;
using ambrel::BundleLayout;
using ambrel::Path;
using ambrel::UserPlaces;

namespace {

void build(const Adoption& adoption, const Path& folder, const Path& bundle) {
    StagingFolder staging(folder);
    const auto built = BundleLayout::wrapper(staging.path(), adoption.name).bundle;
    try {
        writeAdoptedBundle(adoption, built);
        staging.putInPlace(built, bundle);
    } catch (const ambrel::FileError& error) {
        throw staging.outwards(error);
    }
}

/// Whether the bundle at `place` was made of the same program.
bool isMadeOf(const Adoption& adoption, const Path& place) {
    const auto app = ambrel::AppBundle::read(place);
    return app && isAdopted(*app) && app->bundleId == adoption.identifier &&
           programOf(*app) == adoption.program;
}

Adopted told(const Path& bundle, const std::string& name, const Path& program) {
    return {.bundle = bundle,
            .name = name,
            .program = program,
            .hasIcon = ambrel::fileSystem::exists(BundleLayout{bundle}.icon()),
            .notices = {}};
}

Adopted known(const ambrel::AppBundle& app) {
    const Path bundle{ambrel::paths::withoutTrailingSlashes(app.url)};
    auto adopted = told(bundle, std::string(ambrel::paths::stem(bundle)), programOf(app));
    adopted.existed = true;
    return adopted;
}

Adopted made(const Adoption& adoption, const Path& folder) {
    const auto bundle = BundleLayout::wrapper(folder, adoption.name).bundle;
    const bool existed = isMadeOf(adoption, bundle);
    if (!existed && ambrel::fileSystem::kindOf(bundle)) {
        throw Refusal(Refusal::Kind::placeTaken, bundle,
                      "Something else stands at " + ambrel::utf8::oneLine(bundle) +
                          ", where the application of " + inQuotes(adoption.name) + " would stand.",
                      Remedy::chooseFolder);
    }
    if (!existed) build(adoption, folder, bundle);
    auto adopted = told(bundle, adoption.name, adoption.program);
    adopted.existed = existed;
    adopted.notices = adoption.notices;
    return adopted;
}

} // namespace

Adopted adopt(const AdoptRequest& request, const UserPlaces& user,
              const ambrel::Environment& environment) {
    if (request.folder) requireUtf8(*request.folder, "the folder");
    // In a folder of its own another bundle of the same program may be wanted.
    const auto rule = request.folder ? KnownApplications::areLast : KnownApplications::areMeant;
    const auto meant = requireMeantProgram(request.program, rule, user, environment);
    if (const auto* app = std::get_if<ambrel::AppBundle>(&meant)) return known(*app);
    const auto folder = request.folder.value_or(ambrel::WrapperFactory::defaultOutputDir(user));
    return made(std::get<Adoption>(meant), folder);
}

std::string referenceTo(const Adopted& adopted, const UserPlaces& user) {
    std::size_t called = 0;
    bool listed = false;
    for (const auto& app : AppCatalog::scan(AppCatalog::defaultSearchDirs(user))) {
        if (app.name != adopted.name && app.bundleId != adopted.name) continue;
        ++called;
        listed = listed || ambrel::fileSystem::isSameItem(app.url, adopted.bundle);
    }
    return listed && called == 1 ? adopted.name : adopted.bundle;
}

} // namespace korvane
