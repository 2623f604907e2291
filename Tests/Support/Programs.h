#pragma once

#include "Support/Files.h"

#include <csignal>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace korvane::test {

/// What a program did. `signal` is 0 for one that ended by itself.
struct ProgramResult {
    int status = -1;
    int signal = 0;
    std::string output;
    std::string error;
    std::vector<std::string> errorWrites; ///< standard error, one element for each write
};

struct ProgramSetup {
    std::vector<std::string> command; ///< looked up in PATH
    std::map<std::string, std::string> environment{};
    Path currentDirectory{};
    std::vector<int> closedStreams{};
    std::vector<int> ignoredSignals{};
};

/// A program that is running, not waited for yet.
class RunningProgram {
public:
    explicit RunningProgram(const ProgramSetup& setup);
    RunningProgram(const RunningProgram&) = delete;
    RunningProgram& operator=(const RunningProgram&) = delete;
    /// Kills what is still running.
    ~RunningProgram();

    void send(int signal) const;
    ProgramResult wait();

private:
    pid_t pid_ = -1;
    int output_ = -1;
    int error_ = -1;
};

ProgramResult run(const ProgramSetup& setup);
inline ProgramResult run(const std::vector<std::string>& command) {
    return run(ProgramSetup{.command = command});
}

/// Runs `action` in a child of this process without any privilege, as another user when the tests
/// run as root, and returns its text. "threw: " and the message when it throws.
std::string asOrdinaryUser(const std::function<std::string()>& action);
/// Gives everything below `path` to the user of asOrdinaryUser().
void giveToOrdinaryUser(const Path& path);
/// The command with what makes it run as that user.
std::vector<std::string> commandAsOrdinaryUser(std::vector<std::string> command);

/// The command in a private mount namespace, after `script` (a shell script that may mount) ran.
std::vector<std::string> commandInMountNamespace(const std::string& script,
                                                 const std::vector<std::string>& command);
/// Quotes for the shell.
std::string quoted(const std::string& text);

} // namespace korvane::test
