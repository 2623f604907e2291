#pragma once

#include "Ambrel/Platform/OwnedFd.h"

#include <optional>
#include <string>
#include <string_view>

namespace korvane::runner::bus {

/// Where the socket of a bus is (D-Bus Specification, "Server Addresses").
struct BusAddress {
    enum class Kind {
        file,
        abstract, ///< of this machine's network, without a file
    };

    Kind kind;
    std::string name; ///< an absolute path, or what an abstract one is called
    bool operator==(const BusAddress&) const = default;

    /// The first of the addresses in a text like DBUS_SESSION_BUS_ADDRESS that is a socket's.
    /// `runtimeFolder` is XDG_RUNTIME_DIR, or empty. Absent where there is none.
    static std::optional<BusAddress> parse(std::string_view text, std::string_view runtimeFolder);

    /// The bus of a process with these variables, empty where they are missing. Where it is told
    /// none, that is the socket "bus" in the runtime folder, if it is there and this user's.
    static std::optional<BusAddress> ofSession(std::string_view variable,
                                               std::string_view runtimeFolder);

    /// The address as programs are told it.
    std::string text() const;
};

/// A connection that is being made.
struct Connecting {
    ambrel::OwnedFd socket{}; ///< none where it failed
    int error = 0;            ///< why; EAGAIN where the bus has too many waiting already
};

/// Connects without waiting.
Connecting connectTo(const BusAddress& address);

} // namespace korvane::runner::bus
