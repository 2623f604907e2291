#pragma once

#include "Ambrel/Application/AppBundle.h"
#include "Ambrel/Platform/UserPlaces.h"

#include <functional>
#include <optional>
#include <vector>

namespace ambrel {

/// Finds the applications installed on the machine. Nothing is cached between scans.
struct AppCatalog {
    AppCatalog() = delete;

    /// One application found by a scan.
    struct InstalledApp {
        Path url;             ///< the bundle folder as listed by the scan
        std::string name;     ///< the bundle's file name without its extension
        std::string bundleId; ///< AppBundle::bundleId

        const Path& id() const { return url; }
        /// The icon file that the bundle's Info.plist declares, if it exists; looked up anew at
        /// every call. No other key and no default name is tried.
        std::optional<Path> iconURL() const;

        bool operator==(const InstalledApp&) const = default;
    };

    /// Told after each application that was found how many have been found so far.
    using Progress = std::function<void(std::size_t found)>;

    /// "/Applications", "/Applications/Utilities", the user's own "~/Applications" (expanded) and
    /// "/System/Applications". The order decides which copy of an application is kept.
    static std::vector<Path> defaultSearchDirs(const UserPlaces& user);

    /// The applications lying directly in `dirs`, without this system's own wrappers, one for each
    /// bundle identifier (the first found), sorted by name without regard to case. What cannot be
    /// read is left out. Where the signing tool is there, blocks for one external process for each
    /// application, as many side by side as the machine has cores; the outcome is the same as one
    /// after another, and `progress` is called on this thread.
    static std::vector<InstalledApp> scan(const std::vector<Path>& dirs,
                                          const Progress& progress = {},
                                          const SystemTools& tools = {});
};

} // namespace ambrel

template <> struct std::hash<ambrel::AppCatalog::InstalledApp> {
    std::size_t operator()(const ambrel::AppCatalog::InstalledApp& app) const noexcept;
};
