#include "Ambrel/Application/AppEngine.h"

#include "Ambrel/Application/AppBundle.h"
#include "Ambrel/Instance/BundleLayout.h"
#include "Ambrel/Instance/InstanceConfig.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/Text.h"

#include <algorithm>

namespace ambrel {

namespace {

enum class Test { fileExists, identifierBegins, identifierContains };

struct Rule {
    Test test;
    std::string_view what; ///< a path below the bundle, or a part of the lower-case identifier
    AppEngine engine;
};

// The first rule that matches decides.
constexpr std::array rules{
    Rule{Test::fileExists, "Contents/Frameworks/Electron Framework.framework", AppEngine::electron},
    Rule{Test::fileExists, "Contents/Eclipse/eclipse.ini", AppEngine::eclipse},
    Rule{Test::fileExists, "Contents/MacOS/eclipse", AppEngine::eclipse},
    Rule{Test::identifierBegins, "org.mozilla", AppEngine::firefox},
    Rule{Test::identifierContains, "torbrowser", AppEngine::firefox},
    Rule{Test::identifierContains, "librewolf", AppEngine::firefox},
    Rule{Test::identifierContains, "waterfox", AppEngine::firefox},
    Rule{Test::fileExists, "Contents/Resources/application.ini", AppEngine::firefox},
    Rule{Test::identifierBegins, "com.google.chrome", AppEngine::chromium},
    Rule{Test::identifierBegins, "com.brave.browser", AppEngine::chromium},
    Rule{Test::identifierBegins, "com.microsoft.edgemac", AppEngine::chromium},
    Rule{Test::identifierBegins, "com.vivaldi.vivaldi", AppEngine::chromium},
    Rule{Test::identifierBegins, "com.operasoftware.opera", AppEngine::chromium},
    Rule{Test::identifierBegins, "org.chromium.chromium", AppEngine::chromium},
    Rule{Test::identifierBegins, "ru.yandex.desktop.yandex-browser", AppEngine::chromium},
};

bool matches(const Rule& rule, const Path& app, const std::string& identifier) {
    switch (rule.test) {
    case Test::fileExists:
        return fileSystem::exists(paths::join(app, rule.what));
    case Test::identifierBegins:
        return identifier.starts_with(rule.what);
    case Test::identifierContains:
        return identifier.find(rule.what) != std::string::npos;
    }
    return false;
}

bool isChromiumFramework(const std::string& name) {
    return name.ends_with("Framework.framework") &&
           (name.find("Chromium") != std::string::npos || name.find("Chrome") != std::string::npos);
}

/// A bundle without frameworks proves nothing.
std::vector<std::string> frameworksOf(const Path& app) {
    try {
        return fileSystem::list(BundleLayout{app}.frameworks());
    } catch (const FileError&) {
        return {};
    }
}

std::string identifierOf(const Path& app, const std::optional<std::string>& given) {
    if (given) return text::lowercased(*given);
    const auto bundle = AppBundle::read(app);
    return bundle ? text::lowercased(bundle->bundleId) : std::string();
}

} // namespace

EngineFinding findEngine(const Path& app, const std::optional<std::string>& bundleId) {
    const auto identifier = identifierOf(app, bundleId);
    for (const auto& rule : rules) {
        if (!matches(rule, app, identifier)) continue;
        const bool byFile = rule.test == Test::fileExists;
        return {rule.engine, byFile ? std::string(rule.what) : identifier};
    }
    const auto frameworks = frameworksOf(app);
    const auto found = std::ranges::find_if(frameworks, isChromiumFramework);
    if (found == frameworks.end()) return {AppEngine::other, ""};
    return {AppEngine::chromium, "Contents/Frameworks/" + *found};
}

bool isElectron(const Path& app) { return findEngine(app).engine == AppEngine::electron; }

std::vector<std::string> autoDataDirArgs(const Path& app,
                                         const std::optional<std::string>& bundleId) {
    const std::string home(instanceHomePlaceholder);
    switch (findEngine(app, bundleId).engine) {
    case AppEngine::electron:
    case AppEngine::chromium:
        return {"--user-data-dir=" + home + "/KorvaneData"};
    case AppEngine::firefox:
        return {"-profile", home + "/FirefoxProfile", "-no-remote"};
    case AppEngine::eclipse:
        return {"-data", home + "/workspace"};
    case AppEngine::other:
        break;
    }
    return {};
}

} // namespace ambrel
