#pragma once

#include "Ambrel/Base/Path.h"

namespace ambrel {

/// Where things lie inside an application bundle, and inside a generated wrapper in particular.
/// Each path is spelled here and nowhere else. Forming a path touches no file.
struct BundleLayout {
    Path bundle; ///< the ".app" folder

    Path contents() const { return paths::join(bundle, "Contents"); }
    Path executables() const { return paths::join(contents(), "MacOS"); }
    Path resources() const { return paths::join(contents(), "Resources"); }
    Path frameworks() const { return paths::join(contents(), "Frameworks"); }
    Path infoPlist() const { return paths::join(contents(), "Info.plist"); }

    // A wrapper's own files.
    Path runner() const { return paths::join(executables(), runnerFileName); }
    Path instanceJson() const { return instanceJsonIn(resources()); }
    Path icon() const { return iconIn(resources()); }
    Path pkgInfo() const { return paths::join(contents(), "PkgInfo"); }

    /// The bundle of the wrapper called `displayName` in `outputDir`.
    static BundleLayout wrapper(std::string_view outputDir, std::string_view displayName) {
        return {paths::join(outputDir, std::string(displayName).append(".app"))};
    }
    /// The resources beside a running wrapper's executable, which lies in Contents/MacOS.
    static Path resourcesForExecutable(std::string_view executable) {
        const auto contents =
            paths::deletingLastComponent(paths::deletingLastComponent(executable));
        return paths::join(contents, "Resources");
    }
    static Path instanceJsonForExecutable(std::string_view executable) {
        return instanceJsonIn(resourcesForExecutable(executable));
    }
    static Path iconForExecutable(std::string_view executable) {
        return iconIn(resourcesForExecutable(executable));
    }
    static Path instanceJsonIn(std::string_view resources) {
        return paths::join(resources, "instance.json");
    }
    static Path iconIn(std::string_view resources) { return paths::join(resources, iconFileName); }

    static constexpr std::string_view runnerFileName = "runner";
    static constexpr std::string_view iconFileName = "AppIcon.icns";
    static constexpr std::string_view iconName = "AppIcon"; ///< as CFBundleIconFile names it
};

} // namespace ambrel
