#pragma once

#include <set>

namespace korvane::runner {

/// The windows of other programs.
class ProgramWindows {
public:
    virtual ~ProgramWindows() = default;

    /// Brings all windows of these processes to the front, minimised ones too, in the order in
    /// which they lie, and the topmost gets the focus. Windows on another virtual desktop come to
    /// the one that is shown. Does not wait for it. Without effect where there are none, and on a
    /// desktop that lets no program do this for another.
    virtual void bringToFront(const std::set<int>& processes) = 0;
};

} // namespace korvane::runner
