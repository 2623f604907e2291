#pragma once

#include "korvane-runner/Bus/Linux/HelperChannel.h"

#include <exception>
#include <functional>

namespace korvane::runner::bus {

/// The runner, as the helper beside it tells it of the program and hears from it.
class RunnerLink {
public:
    /// `runner` is its process.
    RunnerLink(HelperChannel channel, int runner) : channel_(std::move(channel)), runner_(runner) {}

    bool isThere() const noexcept { return isThere_; }
    int descriptor() const noexcept { return channel_.descriptor(); }

    void tell(const HelperMessage& message) const noexcept;
    /// That nothing was started, and why, as far as there is memory for the reason.
    void refuse(HelperMessage::Kind kind, const std::exception& error) const noexcept;

    /// The program has ended with that status, of which the runner is told by tellEnd(); or goes on
    /// as another process.
    void noteEnd(int status) { untold_ = status; }
    void noteMoved(int process);
    bool hasEndedWell() const { return untold_ == 0; }
    /// Once for each end.
    void tellEnd(HelperMessage::Kind kind);

    /// Has `signal` called for all that the runner wants the program to get, and tells that it has.
    void hear(const std::function<void(int)>& signal);

private:
    HelperChannel channel_;
    int runner_;
    bool isThere_ = true;
    std::optional<int> untold_;
};

} // namespace korvane::runner::bus
