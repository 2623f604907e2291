#pragma once

#include <span>
#include <vector>

namespace korvane::runner::bus {

/// A child of the process that looks after an instance.
struct ChildProcessKind {
    /// What is known of it; what stands first counts.
    enum class Kin {
        program,       ///< the one that counts as the instance's program
        service,       ///< was started for a name
        otherInstance, ///< the runner of another instance, or beside one
        ofService,     ///< a service has left it behind
        unknown,
    };
    int process;
    Kin kin;
};

/// What has been left behind, and by whom.
struct LeftProcesses {
    std::vector<int> programs{}; ///< they keep the bus
    std::vector<int> services{}; ///< by services, with which they go
    bool areUnseen = false;      ///< whether no child can be looked at

    /// Of all children. Where a service had windows, whatever services have left behind may be
    /// anything of the user's, as a program in a terminal is: it is not ended with them, then.
    static LeftProcesses among(std::span<const ChildProcessKind> children, bool hadWindows);

    bool operator==(const LeftProcesses&) const = default;
};

} // namespace korvane::runner::bus
