#pragma once

#include "Ambrel/Application/AppEngine.h"
#include "Ambrel/Platform/UserPlaces.h"
#include "Ambrel/Wrapper/WrapperGenerator.h"

namespace ambrel {

/// The front door of wrapper creation: checks a request, fills in its defaults and has the wrapper
/// written.
class WrapperFactory {
public:
    /// What a wrapper is to be. `targetApp` is required for the app kind.
    struct Request {
        ShortcutKind kind{};
        std::optional<Path> targetApp; ///< the application bundle to clone
        std::string displayName;       ///< trimmed before use, must not be empty
        std::optional<std::string> url;
        std::optional<Path> openPath;
        std::optional<Path> commandPath;
        std::vector<std::string> commandArgs;
        std::optional<Path> workingDirectory;
        std::optional<Path> instanceHome;    ///< default: "~/KorvaneInstances/" + name, unexpanded
        std::optional<Path> outputDir;       ///< default: defaultOutputDir() of the user
        std::optional<std::string> bundleId; ///< default: defaultBundleId(name)
        Strategy strategy{};
        std::optional<Path> customIcon;
        bool hideWrapperIcon = false;
        std::optional<std::vector<std::string>> extraArgs; ///< absent: by the target's engine
        StringMap environment;
        StringMap infoPlistOverrides;
        bool registerAsBrowser = false;
        bool openWithPassthrough = false;
        std::optional<IconLabel> iconLabel;
        bool menuBarIcon = false;
        bool menuBarIconTemplate = false;
        bool shareUserFolders = true;
    };

    using AppEngine = ambrel::AppEngine;
    using EngineFinding = ambrel::EngineFinding;

    struct FactoryError : std::runtime_error {
        enum class Kind { badTarget, runnerNotFound, emptyName };
        static FactoryError badTarget(const Path& app); ///< "Not a readable .app: " + path
        static FactoryError runnerNotFound();           ///< no korvane-runner to embed
        static FactoryError emptyName();                ///< the trimmed name is empty
        std::string description() const { return what(); }
        Kind kind;
        Path subject; ///< the path of badTarget, else empty

    private:
        FactoryError(Kind kind, const std::string& text, const Path& subject = {});
    };

    /// `runnerBinary` is embedded in every wrapper; absent, RunnerLocator is asked at creation.
    explicit WrapperFactory(UserPlaces user, std::optional<Path> runnerBinary = {});

    /// Writes the wrapper and returns its path. Throws FactoryError, in the order empty name,
    /// missing runner, bad target, before anything is written, and whatever the generator throws.
    Path create(const Request& request) const;

    /// "~/Applications" in the user's home folder.
    static Path defaultOutputDir(const UserPlaces& user);
    /// "app.korvane.instance." + idFragment(displayName).
    static std::string defaultBundleId(const std::string& displayName);
    /// Every character that is no letter, mark or digit becomes "-", the rest lower case. Nothing
    /// is collapsed, trimmed or shortened.
    static std::string idFragment(const std::string& text);
    // What Application/AppEngine.h tells of the bundle at `app`.
    static AppEngine detectEngine(const Path& app, const std::optional<std::string>& bundleId = {});
    static EngineFinding findEngine(const Path& app,
                                    const std::optional<std::string>& bundleId = {});
    static bool isElectron(const Path& app);
    static std::vector<std::string>
    autoDataDirArgs(const Path& app, const std::optional<std::string>& bundleId = {});
    /// The default private home, with the tilde kept: "~/KorvaneInstances/" + the trimmed name.
    static Path defaultInstanceHome(const std::string& displayName);

    std::optional<Path> runnerBinary;

private:
    InstanceConfig configFor(const Request& request, const std::string& name) const;

    UserPlaces user_;
};

} // namespace ambrel
