#pragma once

#include "Ambrel/Instance/ResolvedInstance.h"
#include "Ambrel/Platform/ProcessEnvironment.h"
#include "Ambrel/Platform/SignalHold.h"
#include "Ambrel/Platform/SystemTools.h"
#include "korvane-runner/Desktop/WebDesktop.h"

#include <functional>

namespace korvane::runner {

/// What the host of a web site has to know from before its home moves: asked later, it would be
/// about the instance's home and no longer about the person's.
struct WebSurroundings {
    ambrel::UserPlaces user;
    ambrel::Environment environment; ///< as this process was given it
    ambrel::Path icon;               ///< the instance's icon file, existing or not
    ambrel::SystemTools tools{};
};

/// The host of an instance that is a web site: this process shows it, and starts no other program.
struct WebHost {
    WebHost() = delete;

    using DesktopOpener = std::function<std::unique_ptr<WebDesktop>(DesktopIdentity)>;

    /// Shows the site until its window is closed or a signal asks for the end, and returns the
    /// status of the process. From its start this process has the instance's home as its own. Where
    /// the instance runs already its window comes to the front instead. Throws DesktopError and
    /// LibraryError where there can be no window, LaunchError for an instance without a home, and
    /// FileError when the process has no descriptors left.
    ///
    /// For main, before any thread starts. `openDesktop` is called when home and signals are ready.
    static int run(const ambrel::ResolvedInstance& instance, const WebSurroundings& surroundings,
                   const ambrel::SignalHold& signals, const DesktopOpener& openDesktop);
};

} // namespace korvane::runner
