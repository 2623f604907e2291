#pragma once

#include "korvane-runner/Desktop/AppLoop.h"
#include "korvane-runner/Desktop/Linux/SessionBus.h"
#include "korvane-runner/Desktop/StatusArea.h"

#include <memory>

namespace korvane::runner {

/// An item that tells of itself whoever on the session's bus watches over items, now or later.
/// Panels ask them, and then the item.
class StatusNotifierItem final : public StatusItem {
public:
    /// `bus` and `loop` must outlive this.
    StatusNotifierItem(StatusItemSetup setup, SessionBus& bus, AppLoop& loop);
    ~StatusNotifierItem() override;

private:
    struct State;

    std::shared_ptr<State> state_;
};

} // namespace korvane::runner
