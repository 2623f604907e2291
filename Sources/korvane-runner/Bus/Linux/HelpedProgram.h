#pragma once

#include "Ambrel/Platform/HostedProgram.h"
#include "korvane-runner/Bus/Linux/HelperChannel.h"
#include "korvane-runner/Bus/Linux/Subreaping.h"

#include <memory>

namespace korvane::runner::bus {

/// A program that a helper of this process has started and tells of. The helper wakes this process
/// with SIGCHLD when it has told something. Where the helper is killed the program becomes this
/// process's child, which is no subreaper any more then.
class HelpedProgram final : public ambrel::HostedProgram {
public:
    /// `started` is what the helper with the process `helper` has told; `missed` are the signals
    /// that waited for this process before there was a helper, which is a subreaper from before
    /// then on.
    HelpedProgram(HelperChannel channel, int helper, const HelperMessage& started,
                  std::uint64_t missed, Subreaping subreaping);
    ~HelpedProgram() override;

    bool isRunning() const override;
    int terminationStatus() const override;
    void sendSignal(int signal) const noexcept override;
    bool missed(int signal) const noexcept override;
    /// The helper, for as long as it is there: services and what programs have left are below it.
    int processIdentifier() const override;
    ambrel::OwnedFd openEnd() const override;

private:
    struct State;

    std::unique_ptr<State> state_;
};

/// The bit of HelperMessage::signals that stands for `signal`.
constexpr std::uint64_t signalBit(int signal) {
    return signal >= 1 && signal <= 64 ? std::uint64_t{1} << (signal - 1) : 0;
}

/// The blocked signals that wait for this process.
std::uint64_t waitingSignals();

} // namespace korvane::runner::bus
