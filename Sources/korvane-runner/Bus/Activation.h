#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace korvane::runner::bus {

/// A message that waits until somebody has the name that it is for. Where it is kept is up to
/// whoever reads messages; `ticket` tells it.
struct WaitingMessage {
    std::uint64_t client; ///< whose message it is, by a number that no other client has
    std::uint64_t ticket;
    std::size_t size; ///< in bytes
    bool operator==(const WaitingMessage&) const = default;
};

/// What a waiting message is answered when there will be no service: an error of the bus, without
/// "org.freedesktop.DBus.Error." in front.
struct ActivationError {
    std::string name;
    std::string text;
    bool operator==(const ActivationError&) const = default;

    /// The program could not be started; `reason` is the system's, "Permission denied".
    static ActivationError notStarted(std::string_view service, std::string_view reason);
    static ActivationError timedOut(std::string_view service, std::chrono::milliseconds limit);
    /// So much waits already that nothing more may.
    static ActivationError full(std::string_view service);
};

/// The services of an instance that are being started, and what waits for them. It starts nothing
/// itself, and time is what it is told.
class Activation {
public:
    using Time = std::chrono::steady_clock::time_point;

    struct Limits {
        std::chrono::milliseconds time{120'000}; ///< as long as the bus waits
        std::size_t messages = 4096;
        std::size_t bytes = 64 * 1024 * 1024;
    };

    explicit Activation(Limits limits) : limits_(limits) {}

    enum class Hold {
        start, ///< it waits, and its service has to be started now
        wait,  ///< it waits for one that is being started
        full,  ///< it does not wait
    };
    Hold hold(const std::string& service, WaitingMessage message, Time now);

    /// Messages that wait no longer, in their order, and what they are answered; without an error
    /// they go on.
    struct Release {
        std::vector<WaitingMessage> messages{};
        std::optional<ActivationError> error{};
        std::string service{}; ///< for which they have waited
    };
    /// Somebody has the name now, who may be another than was started.
    Release acquired(std::string_view service);
    /// It could not be started, for the system's reason.
    Release notStarted(std::string_view service, std::string_view reason);
    /// What was started has ended before somebody had the name. One that ends well may have left
    /// something running that will have it: those wait on.
    Release exited(std::string_view service, int status);
    Release signaled(std::string_view service, int signal);

    /// When expired() has to be asked next; absent where nothing waits.
    std::optional<Time> nextExpiry() const;
    /// What waits for one of the services that have taken too long; without an error where there is
    /// none of them any more.
    Release expired(Time now);

    /// What was started for `service` was asked to end, since it has taken too long. Until it has,
    /// or comes nevertheless, what is held for the service waits and starts no second one.
    void askedToEnd(const std::string& service) { asked_.insert(service); }

    enum class End {
        unasked,       ///< exited() and signaled() tell what comes of it
        nothingWaits,  ///< it has ended as it was asked to
        startsAnother, ///< likewise, and its service has to be started now
    };
    /// What was started for `service` has ended.
    End ended(std::string_view service);

    /// What a client that has gone had waiting, which nobody is answered.
    std::vector<WaitingMessage> clientGone(std::uint64_t client);

    /// How much waits, in bytes.
    std::size_t bytes() const { return bytes_; }

    bool isStarting(std::string_view service) const {
        return starts_.find(service) != starts_.end();
    }

private:
    struct Start {
        Time expiry;
        std::vector<WaitingMessage> messages{};
    };
    using Starts = std::map<std::string, Start, std::less<>>;

    Release release(Starts::iterator start, std::optional<ActivationError> error);
    Release fail(std::string_view service, std::string_view name, const std::string& text);

    Limits limits_;
    Starts starts_;
    std::set<std::string, std::less<>> asked_; ///< services of which a process is to end
    std::size_t messages_ = 0;                 ///< of all starts
    std::size_t bytes_ = 0;                    ///< likewise
};

} // namespace korvane::runner::bus
