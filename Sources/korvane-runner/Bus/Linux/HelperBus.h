#pragma once

#include "Ambrel/Instance/InstanceConfig.h"
#include "korvane-runner/Bus/Linux/BusProxy.h"
#include "korvane-runner/Bus/Linux/InstanceSocket.h"
#include "korvane-runner/Bus/Linux/StartedServices.h"

namespace korvane::runner::bus {

/// An instance's bus, as the process beside one of its runners has it: served here, or by another
/// start's, whose place this one takes where that is killed.
class HelperBus {
public:
    struct Setup {
        SocketPlace place;
        SocketClaim claim;
        BusAddress bus; ///< the user's
        std::string prefix;
        const ambrel::InstanceConfig& config;
        ambrel::Path userData; ///< the user's own folder of data
    };

    explicit HelperBus(Setup setup) : setup_(std::move(setup)) {}

    /// What programs are told.
    std::string address() const;
    /// Those of this process that it needs.
    std::vector<int> descriptors() const;

    /// From now on programs are served, or the end of the process that does so is awaited, while
    /// `loop` runs. `changed` is called from there when somebody has come or gone. Throws
    /// FileError. All must outlive it.
    void serve(PollLoop& loop, StartedServices& services, std::function<void()> changed);

    /// A process that was started for the service `name` has ended with that status of wait(2).
    void serviceEnded(std::string_view name, int waitStatus);

    /// Who is served here: nobody where another process does so.
    BusProxy::Counts counts() const;
    std::vector<BusProxy::Client> clientsOfServices() const;

    /// Takes the socket away, unless somebody has come in the last moment. Whom it had let in
    /// before is served also where somebody else has taken it away.
    bool tryEnd();
    /// Takes away a socket that nobody was told of.
    void remove() const noexcept;

private:
    void begin();
    void makeProxy();
    void takeOver();

    Setup setup_;
    PollLoop* loop_ = nullptr;
    StartedServices* services_ = nullptr;
    std::function<void()> changed_;
    std::unique_ptr<BusProxy> proxy_; ///< null where another process has it
    std::optional<PollLoop::Timer> again_;
    PollLoop::Watch leaseWatch_;
};

} // namespace korvane::runner::bus
