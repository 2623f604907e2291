#pragma once

#include "Ambrel/Platform/OwnedFd.h"
#include "Ambrel/Platform/SignalHold.h"

namespace ambrel {

/// Held signals for an event loop. From construction on they no longer wait for wait() but for
/// next(), also those that came before, and a descriptor tells of them. They are not blocked any
/// more but caught, and SIGCHLD is let through at its default disposition: whatever a library
/// starts or waits for behaves as in any other program. Another handler for one of these signals
/// takes it away from here.
///
/// One at a time. To be made on the main thread before any other thread starts, which would block
/// the signals for all that it starts in turn, and after the child was launched, which
/// ChildProcess::missed() asks for. When it goes, the signals wait for the hold again, also what
/// was not taken by then; except those that find another thread that lets them through, where
/// nothing happens.
class SignalSource {
public:
    /// Throws FileError when the system has no descriptors left; the signals are held on then.
    explicit SignalSource(const SignalHold& hold);
    SignalSource(const SignalSource&) = delete;
    SignalSource& operator=(const SignalSource&) = delete;
    ~SignalSource();

    /// Readable when next() has something to give.
    int descriptor() const noexcept { return arrived_.get(); }

    /// Takes the signal that came first; absent when there is none. Never blocks.
    std::optional<ArrivedSignal> next();

private:
    const SignalHold& hold_;
    OwnedFd arrived_;
    OwnedFd arriving_;
};

} // namespace ambrel
