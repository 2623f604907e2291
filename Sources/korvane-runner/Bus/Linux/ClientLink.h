#pragma once

#include "korvane-runner/Bus/Activation.h"
#include "korvane-runner/Bus/Handshake.h"
#include "korvane-runner/Bus/Linux/BusAddress.h"
#include "korvane-runner/Bus/Linux/MessageFlow.h"

#include <chrono>

namespace korvane::runner::bus {

/// What the links of a proxy have in common. All of it outlives them.
struct LinkSurroundings {
    PollLoop& loop;
    const BusAddress& address;
    InstanceBus& bus;
    WaitingRoom& waitingRoom;
    std::span<char> room; ///< to read into
};

/// A program's connection and the one to the bus that belongs to it, from the program's first byte
/// on. When one of the two ends, what it has sent is written to the other, which is closed then.
class ClientLink {
public:
    struct Client {
        std::uint64_t number; ///< that no other client has
        std::int64_t process;
    };

    /// `finished` is called when the link is of no more use; it must not end it within.
    ClientLink(LinkSurroundings surroundings, Client client, ambrel::OwnedFd socket,
               std::function<void()> finished);
    ClientLink(const ClientLink&) = delete;
    ClientLink& operator=(const ClientLink&) = delete;

    const Client& client() const { return client_; }
    const std::string& uniqueName() const { return conversation_.uniqueName(); }

    /// A message that has waited goes on now.
    void release(HeldMessage message);
    /// Or is answered an error, since it has waited in vain.
    void refuse(const HeldMessage& message, const ActivationError& error);

    bool isFinished() const { return isFinished_; }

    /// The bytes that are still to be written to either side.
    std::size_t load() const { return clientEnd_.output().load() + busEnd_.output().load(); }

private:
    template <class Step> void attempt(const Step& step) noexcept;
    void fail() noexcept;
    void connect();
    void retryLater();
    void onEvent(Side side, PollLoop::Event event);
    void take(Side side, std::string_view bytes);
    template <class Handshake>
    Fault takeFrom(Side side, Handshake& handshake, std::string_view bytes);
    void settle();
    bool isPaused(Side side);
    bool isOver() const;

    LinkSurroundings surroundings_;
    Client client_;
    std::function<void()> finished_;
    Conversation conversation_;
    SocketEnd clientEnd_;
    SocketEnd busEnd_;
    ClientHandshake clientHandshake_;
    BusHandshake busHandshake_;
    MessageFlow fromClient_;
    MessageFlow fromBus_;
    PollLoop::Timer retry_;
    std::chrono::milliseconds retryAfter_;
    bool isClientPaused_ = false;
    bool isBusPaused_ = false;
    bool isFinished_ = false;
};

} // namespace korvane::runner::bus
