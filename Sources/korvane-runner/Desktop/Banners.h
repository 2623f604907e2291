#pragma once

#include <functional>
#include <string>

namespace korvane::runner {

/// A notification as a person sees it: plain text, valid UTF-8 without control characters but line
/// breaks, whatever the desktop makes of markup.
struct Banner {
    std::string title;
    std::string body; ///< may be empty
    bool operator==(const Banner&) const = default;
};

/// The desktop's notifications, with the name and icon of the instance and the default sound.
class Banners {
public:
    virtual ~Banners() = default;

    /// Hands `banner` over without waiting. `done` is called later on the main thread, once, when
    /// the desktop has it or will never have it; nothing else tells of a failure.
    virtual void post(const Banner& banner, std::function<void()> done) = 0;
};

} // namespace korvane::runner
