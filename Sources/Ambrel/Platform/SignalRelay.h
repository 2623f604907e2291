#pragma once

#include "Ambrel/Platform/ChildProcess.h"

namespace ambrel {

/// Passes SIGTERM, SIGINT and SIGHUP on to a child, so that ending the runner ends the program that
/// it stands for. From construction on the signals wait; they are delivered in waitUntilExit().
/// A SIGHUP that was ignored stays ignored. For programs only, before any other thread starts: it
/// also gives SIGCHLD its default disposition, ignores SIGPIPE, and opens missing standard streams
/// on /dev/null, so that no file takes their place.
class SignalRelay {
public:
    SignalRelay();

    /// Blocks until `child` has ended, passing on each signal that arrives, except one that the
    /// kernel sent to the whole foreground group: the child has that already. Returns the child's
    /// termination status.
    int waitUntilExit(ChildProcess& child) const;
};

} // namespace ambrel
