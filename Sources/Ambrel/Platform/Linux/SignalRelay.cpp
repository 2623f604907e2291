#include "Ambrel/Platform/SignalRelay.h"

#include <array>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace ambrel {

namespace {

constexpr std::array relayedSignals{SIGTERM, SIGINT, SIGHUP};

bool isIgnored(int signal) {
    struct sigaction action {};
    return sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

/// The signals to wait for. Of the relayed ones SIGINT is taken even where a shell without job
/// control started this program in the background with it ignored: kill -INT names this program.
sigset_t awaitedSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGCHLD);
    for (const int signal : relayedSignals) {
        if (signal != SIGHUP || !isIgnored(SIGHUP)) sigaddset(&signals, signal);
    }
    return signals;
}

/// Whether the kernel sent the signal to the whole foreground group. A terminal that goes away is
/// told to the leader of its session alone.
bool reachesChildToo(const siginfo_t& info) {
    const bool toLeader = info.si_signo == SIGHUP && ::getsid(0) == ::getpid();
    return info.si_code == SI_KERNEL && !toLeader;
}

void openMissingStandardStreams() {
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
        if (::fcntl(stream, F_GETFD) != -1 || errno != EBADF) continue;
        // The lowest free number is this one; it stays open for the child as well.
        [[maybe_unused]] const int opened = ::open("/dev/null", O_RDWR);
    }
}

} // namespace

SignalRelay::SignalRelay() {
    openMissingStandardStreams();
    // An inherited "ignore" would have the kernel throw the child's status away.
    std::signal(SIGCHLD, SIG_DFL);
    // A reader of standard error that has gone is no reason to end without a status.
    std::signal(SIGPIPE, SIG_IGN);
    const auto signals = awaitedSignals();
    sigprocmask(SIG_BLOCK, &signals, nullptr);
}

int SignalRelay::waitUntilExit(ChildProcess& child) const {
    const auto signals = awaitedSignals();
    sigset_t taken; // a signal that the child missed is only the first of its kind
    sigemptyset(&taken);
    while (child.isRunning()) {
        siginfo_t info{};
        const int signal = sigwaitinfo(&signals, &info);
        if (signal <= 0 || signal == SIGCHLD) continue;
        const bool isFirst = sigismember(&taken, signal) == 0;
        sigaddset(&taken, signal);
        if (!reachesChildToo(info) || (isFirst && child.missed(signal))) child.sendSignal(signal);
    }
    return child.terminationStatus();
}

} // namespace ambrel
