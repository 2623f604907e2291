#include "Ambrel/Platform/SignalHold.h"

#include "Ambrel/Platform/Posix/HeldSignals.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace ambrel {

namespace {

bool isIgnored(int signal) {
    struct sigaction action {};
    return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

void openMissingStandardStreams() {
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
        if (::fcntl(stream, F_GETFD) != -1 || errno != EBADF) continue;
        // The lowest free number is this one; it stays open for the child as well.
        [[maybe_unused]] const int opened = ::open("/dev/null", O_RDWR);
    }
}

void doNothing(int) {}

} // namespace

sigset_t requestsToEnd(const SignalHold& hold) {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    // Also where a shell without job control started this program in the background with it
    // ignored: kill -INT names this program.
    sigaddset(&signals, SIGINT);
    if (!hold.hangUpIsIgnored()) sigaddset(&signals, SIGHUP);
    return signals;
}

bool leadsSession() { return ::getsid(0) == ::getpid(); }

SignalHold::SignalHold() : hangUpIsIgnored_(isIgnored(SIGHUP)) {
    openMissingStandardStreams();
    // An inherited "ignore" would have the kernel throw the child's status away.
    std::signal(SIGCHLD, SIG_DFL);
    // A reader of standard error that has gone is no reason to end without a status. Caught and not
    // ignored: what a library starts would have it ignored as well.
    std::signal(SIGPIPE, doNothing);
    auto signals = requestsToEnd(*this);
    sigaddset(&signals, SIGCHLD);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
}

std::optional<ArrivedSignal> SignalHold::takeGivenBack() const {
    if (givenBack_.empty()) return std::nullopt;
    const auto signal = givenBack_.front();
    givenBack_.pop_front();
    return signal;
}

// To wait() that is a child that may have ended, and to everybody else nothing.
void SignalHold::wake() const noexcept { ::kill(::getpid(), SIGCHLD); }

} // namespace ambrel
