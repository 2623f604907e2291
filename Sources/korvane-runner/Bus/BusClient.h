#pragma once

#include "korvane-runner/Bus/InstanceBus.h"
#include "korvane-runner/Bus/MessageBody.h"
#include "korvane-runner/Bus/PendingReplies.h"
#include "korvane-runner/Bus/Verdict.h"

namespace korvane::runner::bus {

/// The longest body that is looked into, in bytes.
inline constexpr std::size_t longestReadBody = 4 * 1024 * 1024;

/// The serial of calls that the client knows nothing of: it would come to this one itself after
/// four thousand million messages.
inline constexpr std::uint32_t reservedSerial = 0xFFFF'FFFF;

/// A program of an instance with a connection of its own to the bus, and what is known of it.
struct BusClient {
    /// `ofInstance` must outlive it.
    BusClient(InstanceBus& ofInstance, std::int64_t ofProcess)
        : bus(ofInstance), process(ofProcess) {}
    BusClient(const BusClient&) = delete;
    BusClient& operator=(const BusClient&) = delete;
    /// What the program had is nobody's then.
    ~BusClient();

    InstanceBus& bus;
    std::int64_t process;
    std::string uniqueName{};              ///< on the bus; empty before the bus has given it one
    OwnerTable::Connection connection = 0; ///< under that name
    PendingReplies pending{};
    bool isReservedOurs = false; ///< whether replies to the reserved serial are not the client's
    bool isMonitor = false;      ///< it may also only have had the bus look as if it were

    /// Whether the bus means it. Who eavesdrops is also told what the bus says to others.
    bool isAddressed(const MessageHeader& header) const;

    /// The message with another body, where there is one, and with the destination that it had
    /// before its name became one on the bus.
    Verdict told(const MessageHeader& header, std::optional<std::string> body = {}) const;

    /// What the bus would answer to a call, without the bus. Nothing where no reply is expected.
    Verdict answered(const MessageHeader& call, std::string_view signature,
                     const std::vector<BodyValue>& values) const;
    /// Likewise an error; `error` is its name behind "org.freedesktop.DBus.Error.".
    Verdict refused(const MessageHeader& call, std::string_view error,
                    const std::string& text) const;
};

} // namespace korvane::runner::bus
