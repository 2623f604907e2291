#pragma once

#include "Ambrel/Platform/OwnedFd.h"

#include <chrono>
#include <compare>
#include <cstdint>
#include <optional>
#include <vector>

namespace ambrel {

/// A file by what it is, whatever path leads to it, and whether one still does.
struct FileIdentity {
    std::uint64_t device = 0;
    std::uint64_t number = 0; ///< on the device

    auto operator<=>(const FileIdentity&) const = default;

    /// That of what stands at `path`, links followed; absent when nothing there can be seen.
    static std::optional<FileIdentity> at(const Path& path) noexcept;
    /// The same for a regular file only: what every process has open, such as /dev/null, tells
    /// nothing of any.
    static std::optional<FileIdentity> ofFileAt(const Path& path) noexcept;
};

/// A file that a process holds.
struct HeldFile {
    FileIdentity identity;
    Path path;              ///< where it stood when it was last linked, without symbolic links
    bool isRemoved = false; ///< no path leads to it any more

    /// Whether it is the file at `place` (without symbolic links, of `identity` now), or was that
    /// until it was removed.
    bool isOrWas(const Path& place, const std::optional<FileIdentity>& now) const;
};

/// What can be seen of a process that runs. What this user may not look at is absent, and proves
/// nothing.
struct ProcessSeen {
    int id = 0;
    int parent = 0; ///< 1, or another's who takes orphans, where the one that started it has ended
    bool isUsers = false;               ///< of the user of this process
    std::optional<HeldFile> executable; ///< that of an interpreter for a script
    std::optional<HeldFile> output;     ///< its standard output, where that is a regular file
    std::optional<HeldFile> error;      ///< the same for standard error
    std::optional<Path> home;           ///< HOME as it was started with
    bool isStartedByBus = false;        ///< by a bus of the session, or by what that has started
};

/// The processes that run now, this one among them, by id; what has ended is left out also where
/// nobody has asked for its status yet. Those that come or go meanwhile may be in it or not. Never
/// fails: where a system shows nobody's processes it is empty.
std::vector<ProcessSeen> runningProcesses() noexcept;

/// This process's own id.
int ownProcessId() noexcept;

/// One process, held so that its id cannot come to mean another.
class ProcessHandle {
public:
    /// Absent when no process has that id. Which one has it is to be looked at afterwards.
    static std::optional<ProcessHandle> open(int id) noexcept;

    int id() const noexcept { return id_; }
    bool hasEnded() const noexcept;
    /// Asks it to end (SIGTERM). Returns false when it has ended or may not be asked.
    bool requestEnd() const noexcept;

    using Clock = std::chrono::steady_clock;
    /// Blocks until one of the processes has ended, at most until `deadline`. Returns whether one
    /// has.
    static bool waitForAny(const std::vector<ProcessHandle>& processes, Clock::time_point deadline);

private:
    ProcessHandle(int id, OwnedFd fd) noexcept : id_(id), fd_(std::move(fd)) {}

    int id_;
    OwnedFd fd_;
};

} // namespace ambrel
