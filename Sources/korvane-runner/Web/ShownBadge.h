#pragma once

#include "korvane-runner/Desktop/AppLoop.h"
#include "korvane-runner/Desktop/IconBadge.h"

#include <cstdint>
#include <memory>

namespace korvane::runner {

/// The number on the icon, brought up to date a few times a second at most, however often it
/// changes.
class ShownBadge {
public:
    ShownBadge(IconBadge& badge, AppLoop& loop);
    ShownBadge(const ShownBadge&) = delete;
    ShownBadge& operator=(const ShownBadge&) = delete;

    /// Has the icon show `count`, or no number where that is below 1.
    void set(std::int64_t count);

    /// Takes the number from the icon now, where there is one.
    void clear();

private:
    void bringUpToDate();

    IconBadge& badge_;
    AppLoop& loop_;
    std::int64_t wanted_ = 0; ///< no number, as it is at the start
    std::int64_t shown_ = 0;
    bool isScheduled_ = false;
    std::shared_ptr<ShownBadge*> self_; ///< what the loop holds weakly
};

} // namespace korvane::runner
