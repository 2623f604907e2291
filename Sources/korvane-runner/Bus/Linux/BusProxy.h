#pragma once

#include "korvane-runner/Bus/Activation.h"
#include "korvane-runner/Bus/InstanceBus.h"
#include "korvane-runner/Bus/Linux/BusAddress.h"
#include "korvane-runner/Bus/Linux/PollLoop.h"
#include "korvane-runner/Bus/Linux/ServiceFolders.h"
#include "korvane-runner/Bus/Linux/ServiceProcesses.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace korvane::runner::bus {

/// What another start of the instance says to the proxy that is there already, and what it is
/// answered. Programs begin with a zero byte.
inline constexpr char leaseByte = 'K';

/// Stands between the programs of an instance and the user's bus: each of them has a connection of
/// its own to the bus behind it. What a program does wrong costs that program's connection, and
/// nobody else anything.
class BusProxy {
public:
    struct Setup {
        ambrel::OwnedFd listening; ///< a socket that listens and does not block
        BusAddress bus;
        InstanceNames names;
        ServiceFolders folders;
        Activation::Limits limits{};
    };

    /// `loop` and `services` must outlive it. From now on programs are served while the loop runs.
    BusProxy(PollLoop& loop, ServiceProcesses& services, Setup setup);
    BusProxy(const BusProxy&) = delete;
    BusProxy& operator=(const BusProxy&) = delete;
    ~BusProxy();

    /// A process that was started for the service `name` has ended with that status of wait(2).
    void serviceEnded(std::string_view name, int waitStatus);

    /// How many there are, which is asked in no time, however many.
    struct Counts {
        std::size_t programs = 0;   ///< that are no service's, those too who have not said anything
        std::size_t ofServices = 0; ///< likewise
        std::size_t leases = 0;     ///< other starts, for which the proxy stays as well
        bool isAnybodyThere() const { return programs + ofServices + leases > 0; }
    };
    Counts counts() const;

    /// Somebody who is connected.
    struct Client {
        std::int64_t process;
        std::vector<std::string> names{}; ///< well-known ones, as programs know them
    };
    /// Those who have begun to speak and are services'.
    std::vector<Client> clientsOfServices() const;

    /// How much memory stands for what is still to be written, in bytes. Each program is held up by
    /// its own; this is for whoever wants to see that all of it is bounded.
    std::size_t load() const;

    /// Takes whoever waits to be let in. For the end, when the socket can be found no more.
    void acceptWaiting();

    /// Has `changed` called from the loop after something has changed in counts() or
    /// clientsOfServices().
    void onChange(std::function<void()> changed);

private:
    class Core;
    std::unique_ptr<Core> core_;
};

} // namespace korvane::runner::bus
