#pragma once

#include "korvane-runner/Bus/Linux/BusProxy.h"
#include "korvane-runner/Desktop/Linux/RealBus.h"

#include <doctest/doctest.h>
#include <map>
#include <optional>
#include <vector>

namespace korvane::test {

/// Starts nothing, and writes down what was to be started.
class FakeServices final : public runner::bus::ServiceProcesses {
public:
    std::optional<std::string> start(const runner::bus::ServiceFile& service,
                                     const runner::bus::ServiceVariables& additions) override;
    bool askToEnd(std::string_view name) override;
    bool isOfService(std::int64_t process) override;

    std::vector<std::string> started;
    std::vector<std::string> asked; ///< to end
    bool isThere = false;           ///< whether what is asked to end has not done so by itself
    runner::bus::ServiceVariables additions; ///< of the last one
    std::optional<std::string> reason;       ///< why it cannot be started; absent: it can
    bool areAllOfServices = false;           ///< who connects from now on
};

/// A bus, and a proxy for the instance "k_One" before it, which runs while somebody waits for it.
class ProxyWorld {
public:
    struct Setup {
        std::vector<std::string> services{}; ///< the names of those that there are
        runner::bus::Activation::Limits limits{};
        std::optional<Path> bus{}; ///< another socket than that of bus()
    };

    ProxyWorld() : ProxyWorld(Setup{}) {}
    explicit ProxyWorld(const Setup& setup);

    /// Until something is so. Fails the test when nothing happens for a long time.
    template <class Condition> void waitUntil(const Condition& condition) {
        while (!condition()) step();
    }
    /// Until the descriptor can be read or written.
    void waitFor(int fd, runner::bus::PollLoop::Interest interest);

    RealBus& bus() { return bus_; }
    runner::bus::BusProxy& proxy() { return *proxy_; }
    FakeServices& services() { return services_; }
    runner::bus::PollLoop& loop() { return loop_; }
    Path socket() const { return tmp_ / "socket"; }
    Path serviceFolder() const { return tmp_ / "data/dbus-1/services"; }
    void addService(const std::string& name) const;

    /// Lets the proxy do what it can do at once.
    void turn();

    /// The most that was to be written at once, in bytes.
    std::size_t highestLoad() const { return highestLoad_; }

    /// A socket that listens, where `backlog` and one more may wait.
    static ambrel::OwnedFd listenAt(const Path& path, int backlog);

private:
    void step();

    TempDir tmp_;
    RealBus bus_;
    runner::bus::PollLoop loop_;
    FakeServices services_;
    std::unique_ptr<runner::bus::BusProxy> proxy_;
    std::size_t highestLoad_ = 0;
};

} // namespace korvane::test
