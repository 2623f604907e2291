#pragma once

#include "Ambrel/Platform/ChildProcess.h"
#include "Ambrel/Platform/Pipe.h"

#include <optional>

namespace korvane::runner {

/// What the engine starts for it. The paths are fixed; only tests pass other ones.
struct SandboxTools {
    ambrel::Path bubblewrap = "/usr/bin/bwrap";
    ambrel::Path busProxy = "/usr/bin/xdg-dbus-proxy";
};

/// Whether the engine can lock its processes in. It ends the program where it finds that it cannot,
/// so this is asked before the first view.
class EngineSandbox {
public:
    /// Starts the trial, which goes on beside whatever is done until require(). Throws
    /// ChildProcessError or FileError where the system starts no process any more.
    explicit EngineSandbox(const ambrel::Environment& environment, SandboxTools tools = {});

    /// Waits for the trial. Throws DesktopError when a tool is missing, naming its package, or the
    /// system does not allow the locks, with the reason. Called once. Nothing is required of a
    /// sandbox that the person has switched off by the engine's own variable.
    void require();

private:
    SandboxTools tools_;
    bool isSwitchedOff_;
    std::optional<ambrel::Pipe> said_; ///< what bubblewrap has to say; absent: not started
    std::optional<ambrel::ChildProcess> trial_;
};

} // namespace korvane::runner
