#include "korvane-runner/Web/ShownBadge.h"

#include <algorithm>
#include <utility>

namespace korvane::runner {

namespace {

constexpr std::chrono::milliseconds delay{50};

} // namespace

ShownBadge::ShownBadge(IconBadge& badge, AppLoop& loop)
    : badge_(badge), loop_(loop), self_(std::make_shared<ShownBadge*>(this)) {}

void ShownBadge::set(std::int64_t count) {
    wanted_ = std::max<std::int64_t>(count, 0);
    if (wanted_ == shown_ || std::exchange(isScheduled_, true)) return;
    loop_.after(delay, [weak = std::weak_ptr(self_)] {
        const auto self = weak.lock();
        if (!self) return;
        (*self)->isScheduled_ = false;
        (*self)->bringUpToDate();
    });
}

void ShownBadge::clear() {
    wanted_ = 0;
    bringUpToDate();
}

void ShownBadge::bringUpToDate() {
    if (wanted_ == shown_) return;
    shown_ = wanted_;
    badge_.show(shown_);
}

} // namespace korvane::runner
