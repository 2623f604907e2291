#pragma once

#include "korvane-runner/Desktop/AppLoop.h"
#include "korvane-runner/Desktop/Linux/SessionBus.h"
#include "korvane-runner/Desktop/StatusArea.h"

namespace korvane::runner {

/// The panels that show the items of the StatusNotifierItem protocol.
class StatusNotifierArea final : public StatusArea {
public:
    /// `bus` and `loop` must outlive this and its items.
    StatusNotifierArea(SessionBus& bus, AppLoop& loop) : bus_(bus), loop_(loop) {}

    std::unique_ptr<StatusItem> show(StatusItemSetup setup) override;

private:
    SessionBus& bus_;
    AppLoop& loop_;
};

} // namespace korvane::runner
