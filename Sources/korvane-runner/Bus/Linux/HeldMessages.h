#pragma once

#include "korvane-runner/Bus/Activation.h"
#include "korvane-runner/Bus/InstanceBus.h"
#include "korvane-runner/Bus/Linux/MessageFlow.h"
#include "korvane-runner/Bus/Linux/PollLoop.h"
#include "korvane-runner/Bus/Linux/ServiceFolders.h"
#include "korvane-runner/Bus/Linux/ServiceProcesses.h"

#include <functional>
#include <map>

namespace korvane::runner::bus {

/// The messages of all programs that wait for services, and the start of these.
class HeldMessages final : public WaitingRoom {
public:
    struct Setup {
        PollLoop& loop;
        ServiceProcesses& services;
        InstanceBus& bus;
        ServiceFolders folders;
        Activation::Limits limits;
        /// A message that waits no longer. With an error it has waited in vain.
        std::function<void(std::uint64_t client, HeldMessage, const ActivationError* error)> free;
        std::function<void()> acquired; ///< a program has another name
    };

    /// No service is known before refreshServices(): most programs that end at once need none.
    explicit HeldMessages(Setup setup);

    /// Reads the files of services, again where some have come or gone.
    void refreshServices();

    bool hold(std::uint64_t client, const std::string& service, HeldMessage message) override;
    bool reserve(std::size_t bytes) override;
    void giveBack(std::size_t bytes) noexcept override { reserved_ -= bytes; }
    void acquired(const std::string& name) override;
    void ended(std::string_view service, int waitStatus);
    /// Drops what a client that has gone had waiting.
    void clientGone(std::uint64_t client);

private:
    bool hasRoomFor(std::size_t bytes) const;
    void readServices();
    void start(const std::string& service);
    void free(Activation::Release release);
    void onTime();
    void setTimer();

    Setup setup_;
    ServiceTable table_;
    Activation activation_;
    std::map<std::uint64_t, HeldMessage> messages_; ///< by ticket
    std::uint64_t lastTicket_ = 0;
    std::size_t descriptors_ = 0;
    std::size_t reserved_ = 0; ///< in bytes, for messages that are not there yet
    PollLoop::Timer timer_;
};

} // namespace korvane::runner::bus
