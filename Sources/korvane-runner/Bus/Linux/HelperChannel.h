#pragma once

#include "Ambrel/Platform/OwnedFd.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>

namespace korvane::runner::bus {

/// What a runner and the helper beside it tell each other.
struct HelperMessage {
    enum class Kind : std::int32_t {
        started,  ///< `number` is the program's process, `signals` what it was too early for
        failed,   ///< the program cannot be started; `text` says why
        declined, ///< nothing was started, and the runner is to do it; `text` says why
        moved,    ///< the process `number` is the program now
        ended,    ///< with `number` as its status; the helper stays
        allEnded, ///< the same, and the helper is about to end
        signal,   ///< to the helper: the program is to get the signal `number`
        signaled, ///< the program has got the first of these that was not told of yet
    };

    Kind kind{};
    std::int32_t number = 0;
    std::uint64_t signals = 0; ///< the lowest bit stands for signal 1
    std::string text{};
    bool operator==(const HelperMessage&) const = default;
};

/// One end of the connection between the two.
class HelperChannel {
public:
    /// Throws FileError where the system has no descriptors left.
    static std::pair<HelperChannel, HelperChannel> makePair();

    /// Never waits. False where the other end has gone, or takes nothing for a long time already.
    bool send(const HelperMessage& message) const noexcept;

    enum class Wait { no, yes };
    /// The message that came first. Absent where there is none, and once the other end has gone:
    /// isOver() tells then.
    std::optional<HelperMessage> receive(Wait wait);
    bool isOver() const noexcept { return isOver_; }

    int descriptor() const noexcept { return socket_.get(); }

private:
    explicit HelperChannel(ambrel::OwnedFd socket) : socket_(std::move(socket)) {}

    ambrel::OwnedFd socket_;
    bool isOver_ = false;
};

} // namespace korvane::runner::bus
