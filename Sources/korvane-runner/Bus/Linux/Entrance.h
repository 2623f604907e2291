#pragma once

#include "korvane-runner/Bus/Linux/PollLoop.h"

#include <functional>
#include <map>

namespace korvane::runner::bus {

/// Lets programs of the user in, and other starts of the instance that want the proxy to stay.
/// Their first byte tells which is which.
class Entrance {
public:
    struct Visitor {
        std::int64_t process = 0;
        bool isOfService = false;
    };
    struct Handlers {
        std::function<bool(std::int64_t process)> isOfService;
        /// A program has begun to speak; nothing of that is read yet.
        std::function<void(ambrel::OwnedFd, Visitor)> program;
        std::function<void()> changed; ///< somebody has come or gone
    };

    Entrance(PollLoop& loop, Handlers handlers);
    Entrance(const Entrance&) = delete;
    Entrance& operator=(const Entrance&) = delete;

    /// A socket that listens.
    void listenOn(ambrel::OwnedFd listening);
    /// Takes all who wait to be let in, without descriptors none. What is wrong with one does not
    /// keep the others out.
    void acceptWaiting();

    /// How many have not said anything yet, or have a lease.
    struct Counts {
        std::size_t programs = 0;
        std::size_t ofServices = 0;
        std::size_t leases = 0;
    };
    const Counts& counts() const { return counts_; }

private:
    struct Guest {
        Visitor visitor;
        ambrel::OwnedFd socket;
        PollLoop::Time comeAt;
        bool hasLease = false;
        PollLoop::Watch watch{};
    };
    using Guests = std::map<std::uint64_t, Guest>;

    enum class Next { maybeMore, none };

    void pause();
    void acceptSome();
    Next acceptNext();
    void admit(ambrel::OwnedFd socket);
    void onEvent(std::uint64_t number);
    void hear(Guests::iterator guest, char first);
    void grantLease(Guests::iterator guest);
    std::size_t& countOf(const Guest& guest);
    Guests::iterator take(Guests::iterator guest);
    void remove(Guests::iterator guest);
    void removeSilent();

    PollLoop& loop_;
    Handlers handlers_;
    ambrel::OwnedFd listening_;
    PollLoop::Watch watch_;
    PollLoop::Timer again_;
    PollLoop::Timer patience_;
    Guests guests_;
    Counts counts_;
    std::uint64_t lastNumber_ = 0;
};

} // namespace korvane::runner::bus
