#pragma once

#include "korvane-runner/Desktop/IconBadge.h"
#include "korvane-runner/Desktop/Linux/SessionBus.h"

#include <memory>
#include <string>

namespace korvane::runner {

/// The number that docks show which know Unity's LauncherEntry signal. A dock that is started later
/// gets it, too. It goes by itself when the program's connection to the bus does.
class LauncherBadge final : public IconBadge {
public:
    /// `desktopId` is that of the instance's desktop entry. `bus` must outlive this.
    LauncherBadge(const std::string& desktopId, SessionBus& bus);

    void show(std::int64_t count) override;

private:
    struct State;

    std::shared_ptr<State> state_;
};

} // namespace korvane::runner
