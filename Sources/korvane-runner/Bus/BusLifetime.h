#pragma once

#include <chrono>
#include <cstddef>
#include <optional>

namespace korvane::runner::bus {

/// How long what gives an instance its names stays. A program whose bus goes away ends at once,
/// with what it has not saved, so it stays for everybody who may still need it; services that were
/// started for them alone go when nobody else is left. Time is what it is told.
class BusLifetime {
public:
    using Time = std::chrono::steady_clock::time_point;

    /// Services that nobody needs stay for this long: programs come and go in a row.
    static constexpr std::chrono::milliseconds grace{3000};

    /// Who is there.
    struct Present {
        bool program = false;         ///< the one that was started, or what it has become
        std::size_t leases = 0;       ///< other starts of the instance
        std::size_t clients = 0;      ///< programs on the bus that are no service's
        std::size_t orphans = 0;      ///< what the program left behind
        std::size_t applications = 0; ///< services with windows, in which work may not be saved
        std::size_t services = 0;     ///< those that are none

        bool anybody() const { return program || leases + clients + orphans + applications > 0; }
    };

    enum class Step {
        stay,
        endServices, ///< ask the services to end that were not asked yet, and stay until they have
        end,
    };
    Step step(const Present& present, Time now);

    /// When step() has to be asked again though nobody came or went; absent where it need not.
    std::optional<Time> next() const { return next_; }

    /// Somebody has asked for the end: from now on services go as soon as nobody needs them.
    void hurry() { isInHurry_ = true; }

private:
    bool isInHurry_ = false;
    std::optional<Time> aloneSince_;
    std::optional<Time> next_;
};

} // namespace korvane::runner::bus
