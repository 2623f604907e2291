#pragma once

#include "Ambrel/Instance/InstanceRegistry.h"
#include "Ambrel/Launch/ProcessDescent.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace korvane {

/// What runs of one instance, by the ids of the processes.
struct RunningProcesses {
    std::vector<int> ids;   ///< all of it, those that started the others first
    std::vector<int> heads; ///< those of `ids` that end the others when they end: the runners, and
                            ///< whatever else was started by nothing else in `ids`

    /// Whether the program that it was started for runs, as far as can be told: not only what an
    /// instance with names of its own on the session bus has for its programs, which stays a moment
    /// longer.
    bool hasProgram = false;
    std::map<int, std::string> programs{}; ///< what the processes run, by its file's name

    bool none() const { return ids.empty(); }
};

/// What runs of instances: one look at all processes, for as many instances as are to be told
/// about.
///
/// To an instance belong its runner, the `korvane open` or `korvane run` that waits for this, what
/// descends from the runner, and every process of this user whose standard output or error is the
/// instance's log, or whose HOME is the instance's home. A home that is or contains the user's own
/// tells nothing, and neither does an environment that cannot be read. What is
/// another instance's runner, descends from one, or writes into another log, does not belong to an
/// instance by its home alone: it may have been started out of this one, as the other's runner with
/// this one's log too. This process belongs to none.
class Running {
public:
    static Running now(const ambrel::UserPlaces& user);
    Running(Running&&) noexcept = default;
    Running& operator=(Running&&) noexcept = default;
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;
    ~Running() = default;

    RunningProcesses of(const ambrel::InstanceRecord& record) const;

    /// The processes of this user whose HOME this is, or that write into the log in it, whosever
    /// they are; but not this process.
    std::vector<int> in(const ambrel::Path& home) const;

private:
    /// A process, with what is asked of it for each instance.
    struct Known {
        const ambrel::ProcessSeen* process;
        const ambrel::ProcessSeen* runner;          ///< the nearest above, or itself; may be null
        std::optional<ambrel::FileIdentity> home{}; ///< what stands at its HOME
    };
    struct Signs;

    Running(std::vector<ambrel::ProcessSeen> processes, ambrel::UserPlaces user);
    bool belongs(const Known& known, const Signs& signs) const;
    bool isProgram(const ambrel::ProcessSeen& process, const Signs& signs) const;
    bool waitsForRunner(const ambrel::ProcessSeen& process, const Signs& signs) const;
    std::vector<int> waiting(const Signs& signs) const;

    ambrel::ProcessDescent descent_;
    std::vector<Known> known_; ///< all of them, in their order
    ambrel::UserPlaces user_;
};

/// Throws Refusal instanceRuns, with Remedy::stopFirst, while something of the instance runs.
void requireNotRunning(const ambrel::InstanceRecord& record, const ambrel::UserPlaces& user);

/// "process 12", "processes 12 and 34", "processes 12, 34, 56 and 7 more"; behind each what it runs
/// where `programs` tells, and runners last: "processes 12 (vim) and 10 (runner)".
std::string spokenProcesses(const std::vector<int>& ids,
                            const std::map<int, std::string>& programs = {});

} // namespace korvane
