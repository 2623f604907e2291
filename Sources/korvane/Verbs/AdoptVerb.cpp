#include "korvane/Verbs/AdoptVerb.h"

#include "Ambrel/Application/AppCatalog.h"
#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Wrapper/WrapperFactory.h"
#include "Manager/Base/ManagerError.h"
#include "Manager/Base/Quoting.h"
#include "Manager/Files/StagingFolder.h"
#include "Manager/Programs/Linux/Adoption.h"
#include "Manager/Rules/UserText.h"
#include "korvane/CommandLine/Options.h"
#include "korvane/Output/JsonOutput.h"
#include "korvane/Output/Messages.h"

#include <ostream>

namespace korvane {

using ambrel::AppCatalog;
using ambrel::BundleLayout;
using ambrel::Path;

namespace {

struct AdoptOptions {
    std::string program;
    std::optional<std::string> into;
    bool asJson = false;
};

/// What the next command can call the new application: its name, where the catalog finds it by
/// that.
std::string nameFor(const Adoption& adoption, const Path& bundle, const ambrel::UserPlaces& user) {
    const auto apps = AppCatalog::scan(AppCatalog::defaultSearchDirs(user));
    std::size_t called = 0;
    bool listed = false;
    for (const auto& app : apps) {
        if (app.name != adoption.name && app.bundleId != adoption.name) continue;
        ++called;
        listed = listed || ambrel::fileSystem::isSameItem(app.url, bundle);
    }
    return listed && called == 1 ? adoption.name : bundle;
}

void build(const Adoption& adoption, const Path& folder, const Path& bundle) {
    StagingFolder staging(folder);
    const auto built = BundleLayout::wrapper(staging.path(), adoption.name).bundle;
    writeAdoptedBundle(adoption, built);
    staging.putInPlace(built, bundle);
}

int adopt(const AdoptOptions& options, const Surroundings& surroundings) {
    if (options.into) requireUtf8(*options.into, "--into");
    const auto adoption =
        planAdoption(options.program, surroundings.user, surroundings.environment);
    const auto folder = options.into ? usablePath(*options.into, surroundings.user)
                                     : ambrel::WrapperFactory::defaultOutputDir(surroundings.user);
    const auto bundle = BundleLayout::wrapper(folder, adoption.name).bundle;
    if (ambrel::fileSystem::kindOf(bundle)) {
        throw Refusal("Something stands at " + ambrel::utf8::oneLine(bundle) +
                      " already. Remove it first, or choose another folder with --into.");
    }
    build(adoption, folder, bundle);
    for (const auto& warning : adoption.warnings) warn(surroundings, warning);
    say(surroundings, "Adopted " + ambrel::utf8::oneLine(adoption.call.program) + " as " +
                          inQuotes(adoption.name) + ".");
    if (!ambrel::fileSystem::exists(BundleLayout{bundle}.icon())) {
        say(surroundings, "It has no icon: no picture was found for it that could be read.");
    }
    say(surroundings, "Make an instance of it with: korvane create app NAME " +
                          shellWord(nameFor(adoption, bundle, surroundings.user)));
    if (options.asJson) {
        json::write(json::bundle(bundle), surroundings.results);
    } else {
        surroundings.results << bundle << '\n';
    }
    return 0;
}

} // namespace

Verb adoptVerb() {
    return {"adopt",
            "Make an application bundle out of an installed program.",
            {"korvane adopt chromium",
             "korvane adopt /usr/share/applications/firefox-esr.desktop --into ~/Applications",
             "korvane adopt /usr/bin/xterm"},
            [](CLI::App& app, const Surroundings& surroundings) -> Action {
                const auto given = std::make_shared<AdoptOptions>();
                options::text(app, "PROGRAM", given->program,
                              "A desktop entry's path or id, or a program's path or name")
                    ->required();
                options::text(app, "--into", given->into,
                              "Where the bundle goes (default: ~/Applications)")
                    ->type_name("DIR");
                options::flag(app, "--json", given->asJson, "Write JSON");
                return [given, &surroundings](const auto&) { return adopt(*given, surroundings); };
            }};
}

} // namespace korvane
