#pragma once

#include "korvane-runner/Desktop/IconBadge.h"
#include "korvane-runner/Desktop/Linux/SessionBus.h"

#include <string>

namespace korvane::runner {

/// The number that docks show which know Unity's LauncherEntry signal. It goes by itself when the
/// program's connection to the bus does.
class LauncherBadge final : public IconBadge {
public:
    /// `desktopId` is that of the instance's desktop entry. `bus` must outlive this.
    LauncherBadge(const std::string& desktopId, SessionBus& bus);

    void show(std::int64_t count) override;

private:
    std::string entry_;
    SessionBus& bus_;
};

} // namespace korvane::runner
