#include "Ambrel/Platform/Posix/HeldSignals.h"

namespace ambrel {

ArrivedSignal::Sender senderOf(const siginfo_t& info) noexcept {
    return info.si_code == SI_KERNEL ? ArrivedSignal::Sender::kernel
                                     : ArrivedSignal::Sender::process;
}

std::optional<ArrivedSignal> SignalHold::wait() const {
    if (const auto given = takeGivenBack()) return given;
    auto signals = requestsToEnd(*this);
    sigaddset(&signals, SIGCHLD);
    siginfo_t info{};
    const int signal = sigwaitinfo(&signals, &info);
    if (signal <= 0 || signal == SIGCHLD) return std::nullopt;
    return ArrivedSignal{signal, senderOf(info), leadsSession()};
}

} // namespace ambrel
