#include "Ambrel/Wrapper/WrapperFactory.h"

#include "Ambrel/Base/Utf8.h"
#include "Ambrel/Platform/Text.h"
#include "Ambrel/Wrapper/RunnerLocator.h"

namespace ambrel {

using FactoryError = WrapperFactory::FactoryError;

FactoryError::FactoryError(Kind errorKind, const std::string& text, const Path& path)
    : std::runtime_error(utf8::oneLine(text)), kind(errorKind), subject(path) {}

FactoryError FactoryError::badTarget(const Path& app) {
    return {Kind::badTarget, "Not a readable .app: " + app, app};
}

FactoryError FactoryError::runnerNotFound() {
    return {Kind::runnerNotFound, "Could not locate the korvane-runner binary to embed."};
}

FactoryError FactoryError::emptyName() {
    return {Kind::emptyName, "The clone needs a non-empty name."};
}

namespace {

struct Target {
    Path path;
    std::vector<std::string> arguments;
};

Target targetFor(const WrapperFactory::Request& request) {
    auto arguments = request.extraArgs.value_or(std::vector<std::string>());
    if (request.kind != ShortcutKind::app) return {Path(), std::move(arguments)};
    if (!request.targetApp) throw FactoryError::badTarget("/");
    const auto app = AppBundle::read(*request.targetApp);
    if (!app) throw FactoryError::badTarget(*request.targetApp);
    // An empty list is a wish for no arguments; only a missing one is worked out.
    if (!request.extraArgs) arguments = autoDataDirArgs(app->url, app->bundleId);
    return {*request.targetApp, std::move(arguments)};
}

} // namespace

WrapperFactory::WrapperFactory(UserPlaces user, std::optional<Path> runner)
    : runnerBinary(std::move(runner)), user_(std::move(user)) {}

Path WrapperFactory::create(const Request& request) const {
    const auto name = text::trimmingWhitespaceAndNewlines(request.displayName);
    if (name.empty()) throw FactoryError::emptyName();
    const auto runner = runnerBinary
                            ? runnerBinary
                            : RunnerLocator::locate(MainBundle::current(), SystemFileManager());
    if (!runner) throw FactoryError::runnerNotFound();
    const auto config = configFor(request, name);
    return WrapperGenerator().generate(request.outputDir.value_or(defaultOutputDir(user_)),
                                       {.config = config,
                                        .runnerBinary = *runner,
                                        .customIcon = request.customIcon,
                                        .hideWrapperIcon = request.hideWrapperIcon});
}

InstanceConfig WrapperFactory::configFor(const Request& request, const std::string& name) const {
    const auto target = targetFor(request);
    return {
        .displayName = name,
        .bundleId = request.bundleId.value_or(defaultBundleId(name)),
        .kind = request.kind,
        .targetAppPath = target.path,
        .instanceHome = request.instanceHome.value_or(defaultInstanceHome(name)),
        .strategy = request.strategy,
        .extraArgs = target.arguments,
        .environment = request.environment,
        .infoPlistOverrides = request.infoPlistOverrides,
        .registerAsBrowser = request.registerAsBrowser,
        .openWithPassthrough = request.openWithPassthrough,
        .iconLabel = request.iconLabel,
        .menuBarIcon = request.menuBarIcon,
        .menuBarIconTemplate = request.menuBarIconTemplate,
        .shareUserFolders = request.shareUserFolders,
        .url = request.url,
        .openPath = request.openPath,
        .commandPath = request.commandPath,
        .commandArgs = request.commandArgs,
        .workingDirectory = request.workingDirectory,
    };
}

Path WrapperFactory::defaultOutputDir(const UserPlaces& user) {
    return user.expandingTilde("~/Applications");
}

std::string WrapperFactory::defaultBundleId(const std::string& displayName) {
    return "app.korvane.instance." + idFragment(displayName);
}

std::string WrapperFactory::idFragment(const std::string& name) {
    std::string fragment;
    for (std::string_view rest = name; !rest.empty();) {
        const auto character = utf8::takeFirst(rest);
        const bool kept = character && text::isAlphanumeric(*character);
        utf8::append(fragment, kept ? *character : U'-');
    }
    return text::lowercased(fragment);
}

AppEngine WrapperFactory::detectEngine(const Path& app,
                                       const std::optional<std::string>& bundleId) {
    return ambrel::findEngine(app, bundleId).engine;
}

EngineFinding WrapperFactory::findEngine(const Path& app,
                                         const std::optional<std::string>& bundleId) {
    return ambrel::findEngine(app, bundleId);
}

bool WrapperFactory::isElectron(const Path& app) { return ambrel::isElectron(app); }

std::vector<std::string>
WrapperFactory::autoDataDirArgs(const Path& app, const std::optional<std::string>& bundleId) {
    return ambrel::autoDataDirArgs(app, bundleId);
}

Path WrapperFactory::defaultInstanceHome(const std::string& displayName) {
    return "~/KorvaneInstances/" + text::trimmingWhitespaceAndNewlines(displayName);
}

} // namespace ambrel
