#include "Manager/Operations/Adopting.h"

#include "Ambrel/Application/AppCatalog.h"
#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Wrapper/WrapperFactory.h"
#include "Manager/Base/Refusal.h"
#include "Manager/Files/StagingFolder.h"
#include "Manager/Programs/Adoption.h"
#include "Manager/Rules/UserText.h"

namespace korvane {

using ambrel::AppCatalog;
using ambrel::BundleLayout;
using ambrel::Path;
using ambrel::UserPlaces;

namespace {

std::string referenceTo(const std::string& name, const Path& bundle, const UserPlaces& user) {
    std::size_t called = 0;
    bool listed = false;
    for (const auto& app : AppCatalog::scan(AppCatalog::defaultSearchDirs(user))) {
        if (app.name != name && app.bundleId != name) continue;
        ++called;
        listed = listed || ambrel::fileSystem::isSameItem(app.url, bundle);
    }
    return listed && called == 1 ? name : bundle;
}

void build(const Adoption& adoption, const Path& folder, const Path& bundle) {
    StagingFolder staging(folder);
    const auto built = BundleLayout::wrapper(staging.path(), adoption.name).bundle;
    writeAdoptedBundle(adoption, built);
    staging.putInPlace(built, bundle);
}

} // namespace

Adopted adopt(const AdoptRequest& request, const UserPlaces& user,
              const ambrel::Environment& environment) {
    if (request.folder) requireUtf8(*request.folder, "the folder");
    const auto adoption = planAdoption(request.program, user, environment);
    const auto folder = request.folder.value_or(ambrel::WrapperFactory::defaultOutputDir(user));
    const auto bundle = BundleLayout::wrapper(folder, adoption.name).bundle;
    if (ambrel::fileSystem::kindOf(bundle)) {
        throw Refusal(Refusal::Kind::placeTaken, bundle,
                      "Something stands at " + ambrel::utf8::oneLine(bundle) + " already.",
                      Remedy::chooseFolder);
    }
    build(adoption, folder, bundle);
    return {.bundle = bundle,
            .name = adoption.name,
            .program = adoption.call.program,
            .reference = referenceTo(adoption.name, bundle, user),
            .hasIcon = ambrel::fileSystem::exists(BundleLayout{bundle}.icon()),
            .notices = adoption.notices};
}

} // namespace korvane
