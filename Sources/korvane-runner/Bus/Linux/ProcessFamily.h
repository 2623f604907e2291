#pragma once

#include "Ambrel/Base/Path.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace korvane::runner::bus {

/// A process that can be looked at. It may have ended and not been waited for: one whose first
/// thread has ended looks the same and runs.
struct RunningProcess {
    int id;
    int parent;
    std::string start; ///< when it was started: another one of the same id has another
    bool operator==(const RunningProcess&) const = default;
};
/// Absent where there is none of that id.
std::optional<RunningProcess> runningProcess(int id);
std::vector<RunningProcess> runningProcesses();

/// The children of this process among them, also those that others have left to it.
std::vector<int> childrenOfThisProcess();

/// Whether there is a child at all, which is asked in no time.
bool hasChildren() noexcept;

/// A child that has ended, with its status as wait(2) tells it.
struct EndedChild {
    int process;
    int status;
};
/// The next one, which is still to be waited for. Absent where there is none.
std::optional<EndedChild> nextEndedChild() noexcept;

/// The file of the program that a process runs. Absent where nobody may know.
std::optional<ambrel::Path> programOf(int process);

/// Whether it is the runner of another instance, or beside one. It has the user's bus, whoever has
/// started it, and its end is not for this one to ask for.
bool isOfOtherInstance(int process);

/// The value that a variable had when the process was started. Absent without it, and where nobody
/// may know.
std::optional<std::string> startVariableOf(int process, std::string_view name);

} // namespace korvane::runner::bus
