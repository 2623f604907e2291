#include "korvane-runner/Bus/PendingReplies.h"

namespace korvane::runner::bus {

void PendingReplies::add(std::uint32_t serial, PendingReply reply) {
    replies_.emplace(serial, std::move(reply));
}

std::optional<PendingReply> PendingReplies::take(std::uint32_t serial) {
    const auto first = replies_.lower_bound(serial);
    if (first == replies_.end() || first->first != serial) return std::nullopt;
    return std::move(replies_.extract(first).mapped());
}

} // namespace korvane::runner::bus
