#pragma once

#include "Ambrel/Base/Path.h"
#include "Ambrel/Platform/OwnedFd.h"
#include "Ambrel/Platform/ProcessEnvironment.h"
#include "korvane-runner/Bus/Linux/BusAddress.h"

#include <chrono>
#include <optional>
#include <string_view>
#include <variant>

namespace korvane::runner::bus {

/// Where an instance's programs find their bus: a socket in a folder of its own, for each of the
/// user's busses another.
struct SocketPlace {
    ambrel::Path root;   ///< is there already
    ambrel::Path folder; ///< below it
    BusAddress bus{};    ///< the user's, which is told beside the socket

    /// Of the instance whose names begin with `prefix` on `bus`: in XDG_RUNTIME_DIR where that is
    /// this user's folder, else in the folder for temporary files, and always where every program
    /// can connect to a path of that length.
    static SocketPlace of(std::string_view prefix, const BusAddress& bus,
                          const ambrel::Environment& environment);

    ambrel::Path folderPath() const { return ambrel::paths::join(root, folder); }
    ambrel::Path socketPath() const { return ambrel::paths::join(folderPath(), "socket"); }
};

/// The socket of whoever stands there for the bus. While it exists no other process of the same
/// place does; what a killed one has left there is replaced.
class ServedSocket {
public:
    ServedSocket(SocketPlace place, ambrel::OwnedFd folder);

    /// It listens, and does not block.
    ambrel::OwnedFd takeListening() { return std::move(listening_); }
    int listening() const noexcept { return listening_.get(); }
    int lock() const noexcept { return folder_.get(); }

    /// So that nobody finds it any more, and that those who did wait in front of it; and back.
    void hide() const noexcept;
    void show() const noexcept;
    /// Takes all of it away. What comes from now on makes it anew.
    void remove() const noexcept;

    const SocketPlace& place() const { return place_; }

private:
    SocketPlace place_;
    ambrel::Path path_; ///< of its folder
    ambrel::OwnedFd folder_;
    ambrel::OwnedFd listening_;
};

/// A served socket that is hidden until the end of the scope.
class HiddenSocket {
public:
    explicit HiddenSocket(const ServedSocket& served) noexcept : served_(served) { served_.hide(); }
    HiddenSocket(const HiddenSocket&) = delete;
    HiddenSocket& operator=(const HiddenSocket&) = delete;
    ~HiddenSocket() { served_.show(); }

private:
    const ServedSocket& served_;
};

/// A connection to a process that serves the socket already, and does so for as long as it lasts.
struct SocketLease {
    ambrel::OwnedFd connection;
};

/// The user's bus, where `bus` is the socket of some instance: of the one that has started this
/// process. Absent where it is none, or not this user's.
std::optional<BusAddress> busBehind(const BusAddress& bus);

using SocketClaim = std::variant<ServedSocket, SocketLease>;

/// How long whoever serves the socket may take: a process that is about to end answers nobody.
struct ClaimLimits {
    std::chrono::milliseconds answer{2000};
    std::chrono::milliseconds all{5000};
};

/// Serves the socket at `place`, or has the process that does so go on with it. Throws FileError
/// where neither is possible; no other file is left then.
SocketClaim claimSocket(const SocketPlace& place, const ClaimLimits& limits = {});

} // namespace korvane::runner::bus
