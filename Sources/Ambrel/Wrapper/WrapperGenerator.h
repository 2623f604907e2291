#pragma once

#include "Ambrel/Application/AppBundle.h"
#include "Ambrel/Instance/InstanceConfig.h"
#include "Ambrel/Platform/PropertyList.h"

#include <optional>
#include <stdexcept>

namespace ambrel {

/// Writes one instance wrapper: a complete application bundle around a copy of the runner.
class WrapperGenerator {
public:
    struct Options {
        InstanceConfig config;          ///< written as instance.json, and the source of Info.plist
        Path runnerBinary;              ///< the runner executable to copy
        std::optional<Path> customIcon; ///< image chosen by the user for the icon
        bool hideWrapperIcon = false;   ///< Info.plist carries LSUIElement = true
    };

    struct GenError : std::runtime_error {
        enum class Kind { runnerMissing, badTarget };
        static GenError runnerMissing(const Path& runner); ///< "Runner binary not found: " + path
        static GenError badTarget(const Path& app); ///< "Not a readable target .app: " + path
        std::string description() const { return what(); }
        Kind kind;
        Path subject; ///< the path alone

    private:
        GenError(Kind kind, const std::string& text, const Path& subject);
    };

    /// Writes `options.config.displayName` + ".app" into `outputDir` and returns its path.
    /// A bundle that stands there is removed first, with all its contents; missing folders are
    /// made. Throws GenError before anything is written; later FileError, EncodingError and
    /// LibraryError pass through and leave the old bundle gone and the new one partly written.
    /// Instance homes are never touched. Nothing is signed or registered.
    Path generate(const Path& outputDir, const Options& options) const;

    /// Writes Info.plist into the folder `contents`. `iconFile` is the icon's name as
    /// CFBundleIconFile has it, absent for a wrapper without an icon. The configuration's
    /// overrides have the last word. Throws FileError, EncodingError or LibraryError.
    void writeInfoPlist(const Options& options, const std::optional<std::string>& iconFile,
                        const Path& contents) const;

    /// The property-list value of an override; see coercedPlistValue().
    static PropertyListValue coercePlistValue(const std::string& text);

private:
    std::optional<std::string> installIcon(const Options& options,
                                           const std::optional<AppBundle>& target,
                                           const Path& resources) const;
};

} // namespace ambrel
