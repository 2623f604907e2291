#pragma once

#include "korvane-runner/Bus/BusCall.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>

namespace korvane::runner::bus {

/// A reply of the bus that a client waits for, and that may have to be another one.
struct PendingReply {
    BusCallKind kind;   ///< of the call
    std::string name{}; ///< on the bus, where the call was about one
};

/// The replies that a client waits for, by the serials of its calls. It may use a serial again
/// before it was answered, and is answered in order then.
class PendingReplies {
public:
    /// Enough for a program that writes all its questions before it reads an answer. Each may stand
    /// for a name of 255 bytes, so that the bus's own limit of 50,000 would be much memory.
    static constexpr std::size_t most = 16'384;

    bool isFull() const { return replies_.size() >= most; }
    /// For a caller who has seen that it is not full: without a place for its reply a call is
    /// refused.
    void add(std::uint32_t serial, PendingReply reply);

    bool contains(std::uint32_t serial) const { return replies_.contains(serial); }
    /// The first one to that serial, which is not waited for any more. Absent where none is.
    std::optional<PendingReply> take(std::uint32_t serial);

private:
    std::multimap<std::uint32_t, PendingReply> replies_;
};

} // namespace korvane::runner::bus
