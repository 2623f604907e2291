#include "korvane-runner/Bus/Linux/HelperSurroundings.h"

#include "Ambrel/Platform/FileError.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <fcntl.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace korvane::runner::bus {

using namespace ambrel;

void HelperSurroundings::blockSignals() noexcept {
    sigset_t signals;
    sigfillset(&signals);
    for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS}) {
        sigdelset(&signals, fault);
    }
    sigprocmask(SIG_SETMASK, &signals, nullptr);
}

OwnedFd HelperSurroundings::openSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGCHLD);
    sigaddset(&signals, SIGTERM);
    OwnedFd fd(::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
    if (!fd) throwFileError("watch", "signals");
    return fd;
}

void HelperSurroundings::closeAllBut(std::vector<int> kept) {
    std::ranges::sort(kept);
    unsigned first = STDERR_FILENO + 1;
    for (const int fd : kept) {
        const auto number = static_cast<unsigned>(fd);
        if (number > first) ::close_range(first, number - 1, 0);
        first = std::max(first, number + 1);
    }
    ::close_range(first, ~0U, 0);
}

void HelperSurroundings::requireRoom(const OwnedFd& nothing) {
    constexpr std::size_t mostAtOnce = 4; // and a program on the bus takes two
    std::array<OwnedFd, mostAtOnce> room;
    for (auto& fd : room) {
        fd = OwnedFd(::fcntl(nothing.get(), F_DUPFD_CLOEXEC, 0));
        if (!fd) throwFileError("open", "all that a start takes");
    }
}

void HelperSurroundings::leave(const OwnedFd& nothing) noexcept {
    // A folder in use cannot be unmounted, and who reads what the runner writes awaits its end.
    [[maybe_unused]] const int moved = ::chdir("/");
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        ::dup2(nothing.get(), stream);
    }
}

} // namespace korvane::runner::bus
