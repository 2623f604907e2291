#include "korvane-runner/Bus/Linux/ClientLink.h"

#include <algorithm>
#include <cerrno>
#include <exception>
#include <new>

namespace korvane::runner::bus {

namespace {

using namespace ambrel;
using namespace std::chrono_literals;

/// No more is read from one side while more than this is to be written to the other.
constexpr std::size_t mostQueued = 256 * 1024;

/// Likewise from a program that does not read what it is answered here. It is much, for one that
/// first writes all and reads then has to come to its end.
constexpr std::size_t mostAnswers = 4 * 1024 * 1024;

constexpr auto firstRetry = 2ms;
constexpr auto longestRetry = 100ms;

/// Whether to pause, or to go on with it: what has stopped goes on when there is room again for
/// more than a little.
bool isTooMuch(std::size_t load, bool isPaused) {
    return load > (isPaused ? mostQueued / 2 : mostQueued);
}

bool isForNow(int error) {
    return error == EAGAIN || error == EMFILE || error == ENFILE || error == ENOBUFS ||
           error == ENOMEM;
}

} // namespace

ClientLink::ClientLink(LinkSurroundings surroundings, Client client, OwnedFd socket,
                       std::function<void()> finished)
    : surroundings_(surroundings), client_(client), finished_(std::move(finished)),
      conversation_(surroundings.bus, client.process),
      clientEnd_(surroundings.loop, std::move(socket),
                 [this](PollLoop::Event event) { onEvent(Side::client, event); }),
      fromClient_(Side::client,
                  {client.number, conversation_, clientEnd_, busEnd_, surroundings.waitingRoom}),
      fromBus_(Side::bus,
               {client.number, conversation_, clientEnd_, busEnd_, surroundings.waitingRoom}),
      retry_(surroundings.loop,
             [this] { attempt([this] { busEnd_.isOpen() ? settle() : connect(); }); }),
      retryAfter_(firstRetry) {
    connect();
}

// The bus lets few wait. Whoever connects to it without a proxy is made to wait by the system.
// Descriptors, too, become free again.
void ClientLink::connect() {
    auto connecting = connectTo(surroundings_.address);
    if (isForNow(connecting.error)) return retryLater();
    if (connecting.socket) {
        busEnd_ = SocketEnd(surroundings_.loop, std::move(connecting.socket),
                            [this](PollLoop::Event event) { onEvent(Side::bus, event); });
    } else {
        busEnd_.endInput();
        busEnd_.endOutput();
    }
    retryAfter_ = firstRetry;
    settle();
}

void ClientLink::retryLater() {
    retry_.setAfter(retryAfter_);
    retryAfter_ = std::min<std::chrono::milliseconds>(retryAfter_ * 2, longestRetry);
}

/// Where there is no memory for what one program says or is told, or anything else fails that
/// nobody has foreseen, that one ends, and not all.
template <class Step> void ClientLink::attempt(const Step& step) noexcept {
    try {
        step();
    } catch (const std::exception&) {
        fail();
    }
}

void ClientLink::fail() noexcept {
    for (auto* end : {&clientEnd_, &busEnd_}) {
        end->endInput();
        end->endOutput();
        end->update(false);
        *end = SocketEnd();
    }
    retry_.clear();
    isFinished_ = true;
    try {
        finished_();
    } catch (const std::bad_alloc&) {
        // It is swept up with the next one.
    }
}

void ClientLink::onEvent(Side side, PollLoop::Event event) {
    attempt([&] {
        auto& end = side == Side::client ? clientEnd_ : busEnd_;
        if (event.canRead && end.isReading()) {
            const auto bytes = end.read(surroundings_.room);
            if (!bytes.empty()) take(side, bytes);
        }
        settle();
    });
}

void ClientLink::take(Side side, std::string_view bytes) {
    const auto fault = side == Side::client ? takeFrom(side, clientHandshake_, bytes)
                                            : takeFrom(side, busHandshake_, bytes);
    // The bus ends a connection for the same, after all that came before it.
    if (fault != Fault{}) (side == Side::client ? clientEnd_ : busEnd_).endInput();
}

template <class Handshake>
Fault ClientLink::takeFrom(Side side, Handshake& handshake, std::string_view bytes) {
    auto& from = side == Side::client ? clientEnd_ : busEnd_;
    auto& to = side == Side::client ? busEnd_ : clientEnd_;
    if (!handshake.isOver()) {
        const auto taken = handshake.take(bytes);
        if (!taken) return Fault{taken.fault()};
        to.output().push(bytes.substr(0, *taken));
        bytes.remove_prefix(*taken);
        if (bytes.empty()) from.arrived().clear();
    }
    if (bytes.empty()) return {};
    return (side == Side::client ? fromClient_ : fromBus_).take(bytes);
}

void ClientLink::release(HeldMessage message) {
    attempt([&] {
        auto& end = message.to == Side::client ? clientEnd_ : busEnd_;
        if (!message.bytes.empty()) {
            end.output().insert(std::move(message.bytes), std::move(message.descriptors));
        }
        settle();
    });
}

void ClientLink::refuse(const HeldMessage& message, const ActivationError& error) {
    attempt([&] {
        const auto header = MessageHeader::read(message.head);
        if (!header) return;
        const auto verdict = conversation_.refused(*header, error.name, error.text);
        for (const auto& delivery : verdict.deliveries) clientEnd_.output().insert(delivery.bytes);
        settle();
    });
}

bool ClientLink::isPaused(Side side) {
    if (side == Side::client) {
        isClientPaused_ = isTooMuch(busEnd_.output().load(), isClientPaused_) ||
                          clientEnd_.output().inserted() > mostAnswers;
        return isClientPaused_;
    }
    isBusPaused_ = isTooMuch(clientEnd_.output().load(), isBusPaused_);
    return isBusPaused_;
}

/// Whether one side has ended, and the other has got all of it.
bool ClientLink::isOver() const {
    if (clientEnd_.isInputOver() && busEnd_.output().isEmpty()) return true;
    return busEnd_.isInputOver() && clientEnd_.output().isEmpty();
}

/// Writes what can be written, and waits for what is to come.
void ClientLink::settle() {
    if (isFinished_) return;
    // Who does not listen any more is not waited for.
    if (clientEnd_.isInputOver()) clientEnd_.endOutput();
    if (busEnd_.isInputOver()) busEnd_.endOutput();
    const bool isClientFlushed = clientEnd_.flush();
    const bool isBusFlushed = busEnd_.flush();
    if (isClientFlushed && isBusFlushed) {
        retryAfter_ = firstRetry;
    } else if (!retry_.isSet()) {
        retryLater();
    }
    isFinished_ = isOver();
    const bool isLinked = !isFinished_ && !clientEnd_.isInputOver() && !busEnd_.isInputOver();
    clientEnd_.update(isLinked && !isPaused(Side::client));
    busEnd_.update(isLinked && !isPaused(Side::bus));
    if (isFinished_) finished_();
}

} // namespace korvane::runner::bus
