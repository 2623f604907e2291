#pragma once

#include <chrono>
#include <optional>

namespace korvane::runner::bus {

/// What somebody has asked for who wants all of an instance to end. Time is what it is told.
class EndRequest {
public:
    using Time = std::chrono::steady_clock::time_point;

    /// A program that ends within this time does so because it was asked. Later it was another
    /// wish, and that one was not granted.
    static constexpr std::chrono::seconds same{10};

    void come(Time now) { cameAt_ = now; }

    /// Whether what the program leaves behind when it ends now is meant as well.
    bool meansLeftBehind(Time now) const;

private:
    std::optional<Time> cameAt_;
};

} // namespace korvane::runner::bus
