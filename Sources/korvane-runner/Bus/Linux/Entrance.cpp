#include "korvane-runner/Bus/Linux/Entrance.h"

#include "Ambrel/Platform/Posix/Retry.h"
#include "korvane-runner/Bus/Linux/BusProxy.h"

#include <cerrno>
#include <optional>
#include <sys/socket.h>
#include <unistd.h>

namespace korvane::runner::bus {

namespace {

using namespace ambrel;
using namespace std::chrono_literals;

/// How long to wait for descriptors to become free again.
constexpr auto pauseLength = 100ms;
/// As long as the bus waits for whoever says nothing.
constexpr auto longestSilence = 30s;
/// How many are let in before others are served.
constexpr int mostAtOnce = 32;

/// The process on the other side of a socket, if it is this user's.
std::optional<std::int64_t> peerOf(int socket) {
    ucred peer{};
    socklen_t size = sizeof peer;
    if (::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) return std::nullopt;
    if (peer.uid != ::geteuid()) return std::nullopt;
    return peer.pid;
}

/// The first byte without taking it; 0 bytes where the other side has gone.
ssize_t peek(int socket, char& byte) {
    return retryInterrupted([&] { return ::recv(socket, &byte, 1, MSG_PEEK | MSG_DONTWAIT); });
}

bool isNothingYet(ssize_t size) { return size < 0 && (errno == EAGAIN || errno == EWOULDBLOCK); }

} // namespace

Entrance::Entrance(PollLoop& loop, Handlers handlers)
    : loop_(loop), handlers_(std::move(handlers)),
      again_(loop, [this] { listenOn(std::move(listening_)); }),
      patience_(loop, [this] { removeSilent(); }) {}

void Entrance::listenOn(OwnedFd listening) {
    watch_ = {};
    listening_ = std::move(listening);
    again_.setAfter(pauseLength); // there may be no room or no memory to watch it
    watch_ =
        loop_.watch(listening_.get(), {.reading = true}, [this](PollLoop::Event) { acceptSome(); });
    if (watch_) again_.clear();
}

// Without descriptors nobody can be let in, and the socket would tell again and again who waits.
void Entrance::pause() {
    watch_ = {};
    again_.setAfter(pauseLength);
}

void Entrance::acceptWaiting() {
    while (acceptNext() == Next::maybeMore) {
    }
}

// The loop tells again who is left: those who are in are not to wait for all who come.
void Entrance::acceptSome() {
    for (int i = 0; i < mostAtOnce && acceptNext() == Next::maybeMore; ++i) {
    }
}

Entrance::Next Entrance::acceptNext() {
    OwnedFd socket(retryInterrupted([this] {
        return ::accept4(listening_.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    }));
    if (socket) {
        admit(std::move(socket));
        return Next::maybeMore;
    }
    if (errno == ECONNABORTED) return Next::maybeMore;
    if (errno != EAGAIN && errno != EWOULDBLOCK) pause();
    return Next::none;
}

void Entrance::admit(OwnedFd socket) {
    const auto process = peerOf(socket.get());
    if (!process) return;
    const auto number = ++lastNumber_;
    const Visitor visitor{.process = *process, .isOfService = handlers_.isOfService(*process)};
    auto watch = loop_.watch(socket.get(), {.reading = true},
                             [this, number](PollLoop::Event) { onEvent(number); });
    if (!watch) return;
    const auto guest = guests_.emplace(number, Guest{.visitor = visitor,
                                                     .socket = std::move(socket),
                                                     .comeAt = PollLoop::Clock::now(),
                                                     .watch = std::move(watch)});
    ++countOf(guest.first->second);
    if (!patience_.isSet()) patience_.setAfter(longestSilence);
    handlers_.changed();
    // Most have spoken before they are let in.
    onEvent(number);
}

void Entrance::onEvent(std::uint64_t number) {
    const auto guest = guests_.find(number);
    if (guest == guests_.end()) return;
    char first = 0;
    const auto size = peek(guest->second.socket.get(), first);
    if (isNothingYet(size)) return;
    if (size <= 0) return remove(guest);
    hear(guest, first);
}

void Entrance::hear(Guests::iterator guest, char first) {
    if (guest->second.hasLease || first == leaseByte) return grantLease(guest);
    const auto visitor = guest->second.visitor;
    guest->second.watch = {};
    auto socket = std::move(guest->second.socket);
    take(guest);
    handlers_.program(std::move(socket), visitor);
}

// Each byte of its kind is answered, and there is only one. What follows is not for anybody.
void Entrance::grantLease(Guests::iterator guest) {
    char byte = 0;
    auto& held = guest->second;
    retryInterrupted([&] { return ::recv(held.socket.get(), &byte, 1, MSG_DONTWAIT); });
    if (held.hasLease) return;
    --countOf(held);
    held.hasLease = true;
    ++countOf(held);
    const auto sent = retryInterrupted(
        [&] { return ::send(held.socket.get(), &leaseByte, 1, MSG_NOSIGNAL | MSG_DONTWAIT); });
    if (sent != 1) return remove(guest);
    handlers_.changed();
}

std::size_t& Entrance::countOf(const Guest& guest) {
    if (guest.hasLease) return counts_.leases;
    return guest.visitor.isOfService ? counts_.ofServices : counts_.programs;
}

Entrance::Guests::iterator Entrance::take(Guests::iterator guest) {
    --countOf(guest->second);
    return guests_.erase(guest);
}

void Entrance::remove(Guests::iterator guest) {
    take(guest);
    handlers_.changed();
}

void Entrance::removeSilent() {
    const auto latest = PollLoop::Clock::now() - longestSilence;
    const auto before = guests_.size();
    std::optional<PollLoop::Time> next;
    for (auto guest = guests_.begin(); guest != guests_.end();) {
        const auto& [number, held] = *guest;
        if (!held.hasLease && held.comeAt <= latest) {
            guest = take(guest);
            continue;
        }
        if (!held.hasLease && (!next || held.comeAt < *next)) next = held.comeAt;
        ++guest;
    }
    if (next) patience_.set(*next + longestSilence);
    if (guests_.size() < before) handlers_.changed();
}

} // namespace korvane::runner::bus
