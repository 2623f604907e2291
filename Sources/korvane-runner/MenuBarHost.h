#pragma once

#include "Ambrel/Instance/ResolvedInstance.h"
#include "Ambrel/Platform/HostedProgram.h"
#include "Ambrel/Platform/SignalHold.h"
#include "korvane-runner/Desktop/Desktop.h"
#include "korvane-runner/StatusItem/StatusIcon.h"

#include <functional>
#include <memory>

namespace korvane::runner {

/// The host of an instance that is a program with an item in the status area.
struct MenuBarHost {
    MenuBarHost() = delete;

    using DesktopOpener = std::function<std::unique_ptr<Desktop>()>;

    /// Shows the item until `process` has ended, and returns its termination status. Passes on to
    /// it what asks this process to end. Throws DesktopError where there can be no item, and
    /// FileError when this process has no descriptors left: the program runs on, for a WaitingHost.
    ///
    /// For main, before any thread starts.
    static int run(const ambrel::ResolvedInstance& instance, const ambrel::UserPlaces& user,
                   const StatusIconFiles& icons, ambrel::HostedProgram& process,
                   const ambrel::SignalHold& signals, const DesktopOpener& openDesktop);
};

} // namespace korvane::runner
