#include "korvane-runner/Bus/Linux/HelpedProgram.h"

#include "Ambrel/Platform/Posix/ProcessEnd.h"
#include "Ambrel/Platform/Posix/Retry.h"
#include "Ambrel/Platform/Posix/WaitStatus.h"

#include <csignal>
#include <deque>
#include <fcntl.h>
#include <optional>
#include <sys/epoll.h>
#include <sys/wait.h>

namespace korvane::runner::bus {

using namespace ambrel;

struct HelpedProgram::State {
    HelperChannel channel;
    int helper;
    int program;
    std::uint64_t missed;
    std::optional<Subreaping> subreaping; ///< while it is helped
    bool isHelped = true;                 ///< else the program is a child of this process
    std::deque<int> sent{}; ///< the signals that the helper was told of and has not passed on yet
    std::optional<int> status{};
    OwnedFd end{};     ///< what openEnd() handed out: an epoll instance
    OwnedFd watched{}; ///< what it watches beside the channel

    /// Takes what the helper has told.
    void learn() {
        while (isHelped && !status) {
            const auto message = channel.receive(HelperChannel::Wait::no);
            if (message) {
                take(*message);
            } else if (channel.isOver()) {
                takeOver();
            } else {
                return;
            }
        }
        if (!isHelped && !status) reap();
    }

    void take(const HelperMessage& message) {
        using Kind = HelperMessage::Kind;
        if (message.kind == Kind::moved) program = message.number;
        if (message.kind == Kind::signaled && !sent.empty()) sent.pop_front();
        if (message.kind != Kind::ended && message.kind != Kind::allEnded) return;
        // Whoever looks at what of the instance runs is not to find what is about to end.
        if (message.kind == Kind::allEnded) awaitHelper();
        status = message.number;
        watch(openPastEnd());
    }

    /// The helper has been killed. Not before it is quite gone is the program ours.
    void takeOver() {
        awaitHelper();
        isHelped = false;
        // What the program leaves behind from now on is for somebody who waits for it.
        subreaping.reset();
        if (end) ::epoll_ctl(end.get(), EPOLL_CTL_DEL, channel.descriptor(), nullptr);
        reap();
        if (status) return;
        watch(openProcessEnd(program));
        for (const int signal : sent) ::kill(program, signal);
    }

    void awaitHelper() const {
        retryInterrupted([&] { return ::waitpid(helper, nullptr, 0); });
    }

    void reap() {
        int word = 0;
        const auto reaped = retryInterrupted([&] { return ::waitpid(program, &word, WNOHANG); });
        if (reaped == 0) return;
        status = reaped == program ? terminationStatusOf(word) : lostStatus;
        watch(openPastEnd());
    }

    /// Has the descriptor of the end, where it was asked for, be readable as `fd` is.
    void watch(OwnedFd fd) {
        if (!end || !fd) return;
        epoll_event event{};
        event.events = EPOLLIN;
        ::epoll_ctl(end.get(), EPOLL_CTL_ADD, fd.get(), &event);
        watched = std::move(fd);
    }

    OwnedFd openEnd() {
        learn();
        if (status) return openPastEnd();
        if (!isHelped) return openProcessEnd(program);
        if (!end) {
            end = OwnedFd(::epoll_create1(EPOLL_CLOEXEC));
            epoll_event event{};
            event.events = EPOLLIN;
            if (end) ::epoll_ctl(end.get(), EPOLL_CTL_ADD, channel.descriptor(), &event);
        }
        return end ? OwnedFd(::fcntl(end.get(), F_DUPFD_CLOEXEC, 0)) : OwnedFd();
    }
};

HelpedProgram::HelpedProgram(HelperChannel channel, int helper, const HelperMessage& started,
                             std::uint64_t missed, Subreaping subreaping)
    : state_(std::make_unique<State>(State{.channel = std::move(channel),
                                           .helper = helper,
                                           .program = started.number,
                                           .missed = missed | started.signals,
                                           .subreaping = std::move(subreaping)})) {}

HelpedProgram::~HelpedProgram() = default;

bool HelpedProgram::isRunning() const {
    state_->learn();
    return !state_->status;
}

int HelpedProgram::terminationStatus() const {
    state_->learn();
    return state_->status.value_or(lostStatus);
}

void HelpedProgram::sendSignal(int signal) const noexcept {
    if (state_->status) return;
    if (state_->isHelped &&
        state_->channel.send({.kind = HelperMessage::Kind::signal, .number = signal})) {
        state_->sent.push_back(signal);
        return;
    }
    state_->learn(); // the helper has just gone, or the program is ours already
    if (!state_->isHelped && !state_->status) ::kill(state_->program, signal);
}

bool HelpedProgram::missed(int signal) const noexcept {
    return (state_->missed & signalBit(signal)) != 0;
}

int HelpedProgram::processIdentifier() const {
    return state_->isHelped ? state_->helper : state_->program;
}

OwnedFd HelpedProgram::openEnd() const { return state_->openEnd(); }

std::uint64_t waitingSignals() {
    sigset_t waiting;
    sigemptyset(&waiting);
    sigpending(&waiting);
    std::uint64_t bits = 0;
    for (int signal = 1; signal < NSIG; ++signal) {
        if (sigismember(&waiting, signal) == 1) bits |= signalBit(signal);
    }
    return bits;
}

} // namespace korvane::runner::bus
