#pragma once

#include <cstdint>

namespace korvane::runner {

/// The number on the instance's icon in a dock or task list.
class IconBadge {
public:
    virtual ~IconBadge() = default;

    /// Shows `count`, or no number where that is below 1. Without effect on a desktop that shows
    /// none.
    virtual void show(std::int64_t count) = 0;
};

} // namespace korvane::runner
