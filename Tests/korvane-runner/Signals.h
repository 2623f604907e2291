#pragma once

#include "Support/Files.h"

#include <string>
#include <vector>

namespace korvane::test {

/// The reading end of a pipe with a name. Lines arrive within a minute or the test fails.
class Fifo {
public:
    explicit Fifo(Path path);
    Fifo(const Fifo&) = delete;
    Fifo& operator=(const Fifo&) = delete;
    ~Fifo();

    const Path& path() const { return path_; }

    std::string line();

private:
    Path path_;
    int fd_ = -1;
};

/// A command that runs until a signal ends it, whenever that comes. A shell that waits in `read`
/// may take note of one that comes just before it waits, and wait on.
inline std::vector<std::string> untilSignaled() { return {"/usr/bin/tail", "-f", "/dev/null"}; }

/// A program that leads a session on a terminal of its own.
class ProgramOnTerminal {
public:
    /// With `interruptTypedBefore` an interrupt is typed before the program is there and waits for
    /// it.
    enum class Start { plain, interruptTypedBefore };

    explicit ProgramOnTerminal(const std::vector<std::string>& command, Start start = Start::plain);
    ProgramOnTerminal(const ProgramOnTerminal&) = delete;
    ProgramOnTerminal& operator=(const ProgramOnTerminal&) = delete;
    /// Kills what is still running.
    ~ProgramOnTerminal();

    void type(const std::string& keys) const;
    void closeTerminal();
    void send(int signal) const;
    /// Returns once the program has stopped; SIGCONT lets it go on.
    void stop() const;
    /// The exit status; a program that a signal ended is a failure.
    int wait();

private:
    pid_t pid_ = -1;
    int terminal_ = -1;
};

} // namespace korvane::test
