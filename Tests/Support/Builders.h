#pragma once

#include "Ambrel/Instance/InstanceConfig.h"
#include "Support/Files.h"

#include <map>
#include <optional>
#include <string>

namespace korvane::test {

/// The smallest record of an application instance.
ambrel::InstanceConfig smallestConfig();
/// One with this in its property list.
ambrel::InstanceConfig applicationWithOverride(const std::string& key, const std::string& value);
/// A command instance with its home in `home`.
ambrel::InstanceConfig commandConfig(const Path& home, const std::string& commandPath,
                                     const std::vector<std::string>& arguments = {});
/// A record with every field set to something else than its default.
ambrel::InstanceConfig fullConfig();

/// `text` as XML character data.
std::string xmlEscaped(const std::string& text);
/// An XML property list with the given inside of its root dictionary.
std::string xmlPlist(const std::string& insideOfRoot);

/// Writes application bundles; the smallest has an Info.plist with an empty dictionary.
class AppBundleBuilder {
public:
    explicit AppBundleBuilder(Path bundle) : bundle_(std::move(bundle)) {}

    AppBundleBuilder& identifier(const std::string& id) {
        return entry("CFBundleIdentifier", "<string>" + xmlEscaped(id) + "</string>");
    }
    /// Names the executable and writes a shell script in its place.
    AppBundleBuilder& executable(const std::string& name, const std::string& script);
    AppBundleBuilder& iconFile(const std::string& name) {
        return entry("CFBundleIconFile", "<string>" + xmlEscaped(name) + "</string>");
    }
    AppBundleBuilder& entry(const std::string& key, const std::string& xmlValue);
    /// A file below the bundle.
    AppBundleBuilder& file(const Path& name, const std::string& bytes = "x");
    AppBundleBuilder& infoPlist(const std::string& bytes);
    AppBundleBuilder& withoutInfoPlist();
    /// Returns the bundle's path.
    Path write() const;

private:
    Path bundle_;
    std::map<std::string, std::string> entries_;
    std::map<Path, std::string> files_;
    std::map<Path, std::string> scripts_;
    std::optional<std::string> bytes_;
    bool withoutPlist_ = false;
};

/// Writes a wrapper with nothing but its configuration; returns the bundle's path.
Path writeWrapper(const Path& bundle, const ambrel::InstanceConfig& config);
Path writeWrapper(const Path& bundle, const std::string& json);

} // namespace korvane::test
