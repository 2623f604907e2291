#pragma once

#include <sys/resource.h>

namespace korvane::runner::bus {

/// How many descriptors this process may have: as many as the system lets it, from raise() on.
/// Programs are started with the limit from before: some go through all numbers up to it.
class DescriptorLimit {
public:
    DescriptorLimit() noexcept;

    void raise() const noexcept;

    /// The limit from before, until the end of the scope.
    class AsBefore {
    public:
        explicit AsBefore(const DescriptorLimit& limit) noexcept : limit_(limit) { limit_.lower(); }
        AsBefore(const AsBefore&) = delete;
        AsBefore& operator=(const AsBefore&) = delete;
        ~AsBefore() { limit_.raise(); }

    private:
        const DescriptorLimit& limit_;
    };

private:
    void lower() const noexcept;

    rlimit before_{};
    bool isKnown_;
};

} // namespace korvane::runner::bus
