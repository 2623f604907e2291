#pragma once

#include <deque>
#include <optional>

namespace ambrel {

/// A signal that asks this process to end, as it arrived.
struct ArrivedSignal {
    enum class Sender { process, kernel };

    int number = 0;
    /// `kernel` for what a terminal causes: a typed interrupt, a line that hung up.
    Sender sender = Sender::process;
    bool leadsSession = false; ///< whether this process is the leader of its session
};

/// Keeps SIGTERM, SIGINT and SIGHUP waiting from construction on, so that one that comes early is
/// neither lost nor ends this process alone. A SIGHUP that was ignored stays ignored; SIGINT is
/// held even where it was ignored, as a shell starts what it runs in the background. The signals
/// are then taken in one of two ways: by wait(), or in an event loop through a SignalSource.
///
/// For programs only, before any other thread starts, and for as long as the process lives: it also
/// holds SIGCHLD and gives it its default disposition, takes the effect from SIGPIPE, and opens
/// missing standard streams on /dev/null, so that no file takes their place.
class SignalHold {
public:
    SignalHold();
    SignalHold(const SignalHold&) = delete;
    SignalHold& operator=(const SignalHold&) = delete;

    /// Blocks until a held signal arrives, and takes it. Absent when a child may have ended, which
    /// the caller then looks at; also now and then for no reason. An end that came since
    /// construction or since the last call is not missed.
    std::optional<ArrivedSignal> wait() const;

    /// Has wait() return without a signal, now or when it is next called. For any thread.
    void wake() const noexcept;

    /// Has wait() return `signal`, before those that arrive from now on. On the thread that waits.
    void giveBack(const ArrivedSignal& signal) const { givenBack_.push_back(signal); }

    bool hangUpIsIgnored() const noexcept { return hangUpIsIgnored_; }

private:
    /// The first of what was given back, which is not that any more.
    std::optional<ArrivedSignal> takeGivenBack() const;

    bool hangUpIsIgnored_;
    mutable std::deque<ArrivedSignal> givenBack_; ///< a place to wait in, as the system has one
};

} // namespace ambrel
