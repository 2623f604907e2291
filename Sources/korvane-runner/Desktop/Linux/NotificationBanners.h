#pragma once

#include "korvane-runner/Desktop/AppLoop.h"
#include "korvane-runner/Desktop/Banners.h"
#include "korvane-runner/Desktop/Linux/SessionBus.h"
#include "korvane-runner/Desktop/WebDesktop.h"

#include <memory>

namespace korvane::runner {

/// Banners of the Desktop Notifications Specification. Where there is no bus or nobody shows
/// notifications, they are lost.
class NotificationBanners final : public Banners {
public:
    /// `bus` and `loop` must outlive this.
    NotificationBanners(DesktopIdentity identity, SessionBus& bus, AppLoop& loop);
    ~NotificationBanners() override;

    void post(const Banner& banner, std::function<void()> done) override;

private:
    struct State;

    std::shared_ptr<State> state_;
};

} // namespace korvane::runner
