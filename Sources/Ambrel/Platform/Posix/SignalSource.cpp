#include "Ambrel/Platform/SignalSource.h"

#include "Ambrel/Platform/FileError.h"
#include "Ambrel/Platform/Pipe.h"
#include "Ambrel/Platform/Posix/HeldSignals.h"
#include "Ambrel/Platform/Posix/Retry.h"

#include <atomic>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace ambrel {

namespace {

/// One arrival on its way through the pipe, small enough to be written and read as a whole.
struct Arrival {
    int number;
    ArrivedSignal::Sender sender;
};

/// Where the handler writes: a handler is given nothing but the signal.
std::atomic<int> handlersPipe{-1};
static_assert(std::atomic<int>::is_always_lock_free);

void noteArrival(int number, siginfo_t* info, void*) {
    const int error = errno; // of the code that was interrupted
    const Arrival arrival{number, senderOf(*info)};
    // A full pipe holds thousands of requests to end; one more would change nothing.
    [[maybe_unused]] const auto written = ::write(handlersPipe, &arrival, sizeof arrival);
    errno = error;
}

void ensureNeverBlocks(const OwnedFd& fd) { ::fcntl(fd.get(), F_SETFL, O_NONBLOCK); }

template <class Action> void forEachIn(const sigset_t& signals, const Action& action) {
    for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
        if (sigismember(&signals, signal) == 1) action(signal);
    }
}

void catchSignals(const sigset_t& signals) {
    struct sigaction action {};
    action.sa_sigaction = noteArrival;
    // Calls of the system go on where they can: whose they are is not known here.
    action.sa_flags = SA_SIGINFO | SA_RESTART;
    sigfillset(&action.sa_mask);
    forEachIn(signals, [&](int signal) { sigaction(signal, &action, nullptr); });
}

} // namespace

SignalSource::SignalSource(const SignalHold& hold) : hold_(hold) {
    auto pipe = Pipe::make();
    arrived_ = std::move(pipe.readEnd);
    arriving_ = std::move(*pipe.writeEnd);
    ensureNeverBlocks(arrived_);
    ensureNeverBlocks(arriving_);
    handlersPipe = arriving_.get();
    auto signals = requestsToEnd(hold_);
    catchSignals(signals);
    sigaddset(&signals, SIGCHLD);
    // What waited until now arrives within this call.
    pthread_sigmask(SIG_UNBLOCK, &signals, nullptr);
}

SignalSource::~SignalSource() {
    auto signals = requestsToEnd(hold_);
    sigaddset(&signals, SIGCHLD);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    // The handler stays, and writes nowhere from now on: a signal may still find a thread that does
    // not block it, and would end the process there.
    handlersPipe = -1;
    while (const auto signal = next()) hold_.giveBack(*signal);
}

std::optional<ArrivedSignal> SignalSource::next() {
    Arrival arrival{};
    const auto count =
        retryInterrupted([&] { return ::read(arrived_.get(), &arrival, sizeof arrival); });
    if (count != sizeof arrival) return std::nullopt;
    return ArrivedSignal{arrival.number, arrival.sender, leadsSession()};
}

} // namespace ambrel
