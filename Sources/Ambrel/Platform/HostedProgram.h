#pragma once

#include "Ambrel/Platform/OwnedFd.h"

#include <csignal>

namespace ambrel {

/// A program that runs, as whoever stands for it sees it: a child of this process, or one that
/// another process has started for it.
class HostedProgram {
public:
    virtual ~HostedProgram() = default;

    virtual bool isRunning() const = 0;
    /// The exit status, or the signal's number for a program that a signal ended. 1 where the
    /// status was lost. Only after the program has ended.
    virtual int terminationStatus() const = 0;

    /// Sends a signal; never reaches another process that got the same id later.
    virtual void sendSignal(int signal) const noexcept = 0;
    /// Asks the program to end. Does nothing when it has ended.
    void terminate() const noexcept { sendSignal(SIGTERM); }

    /// Whether `signal`, blocked here, was waiting for this process right before the program was
    /// started: then it came too early for the program to get it as well.
    virtual bool missed(int signal) const noexcept = 0;

    /// The process that the program's processes descend from; mostly the program itself.
    virtual int processIdentifier() const = 0;

    /// A descriptor that can be read from the moment on when the program has ended, also when that
    /// was before, and maybe now and then for no reason. Invalid, with errno set, where the system
    /// has none left.
    virtual OwnedFd openEnd() const = 0;

protected:
    HostedProgram() = default;
    HostedProgram(const HostedProgram&) = default;
    HostedProgram& operator=(const HostedProgram&) = default;
};

} // namespace ambrel
