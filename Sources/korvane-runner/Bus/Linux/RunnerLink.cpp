#include "korvane-runner/Bus/Linux/RunnerLink.h"

#include <csignal>
#include <new>
#include <unistd.h>

namespace korvane::runner::bus {

using Kind = HelperMessage::Kind;

void RunnerLink::tell(const HelperMessage& message) const noexcept {
    if (!isThere_) return;
    channel_.send(message);
    // It waits for signals, and this one means a child that may have ended.
    if (::getppid() == runner_) ::kill(runner_, SIGCHLD);
}

void RunnerLink::refuse(Kind kind, const std::exception& error) const noexcept {
    HelperMessage message{.kind = kind};
    try {
        message.text = error.what();
    } catch (const std::bad_alloc&) {
        message.text = "no memory";
    }
    channel_.send(message);
}

void RunnerLink::noteMoved(int process) {
    untold_.reset();
    tell({.kind = Kind::moved, .number = process});
}

void RunnerLink::tellEnd(Kind kind) {
    if (!untold_) return;
    tell({.kind = kind, .number = *untold_});
    untold_.reset();
}

void RunnerLink::hear(const std::function<void(int)>& signal) {
    while (const auto message = channel_.receive(HelperChannel::Wait::no)) {
        if (message->kind != Kind::signal) continue;
        signal(message->number);
        tell({.kind = Kind::signaled});
    }
    if (channel_.isOver()) isThere_ = false;
}

} // namespace korvane::runner::bus
