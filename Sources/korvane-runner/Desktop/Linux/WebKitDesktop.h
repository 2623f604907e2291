#pragma once

#include "korvane-runner/Desktop/Linux/EngineSandbox.h"
#include "korvane-runner/Desktop/Linux/GLibLoop.h"
#include "korvane-runner/Desktop/Linux/LauncherBadge.h"
#include "korvane-runner/Desktop/Linux/NotificationBanners.h"
#include "korvane-runner/Desktop/Linux/SessionBus.h"

namespace korvane::runner {

/// A desktop of Linux, on X11 and on Wayland. Made when the toolkit is open and knows its display.
class WebKitDesktop final : public WebDesktop {
public:
    WebKitDesktop(DesktopIdentity identity, EngineSandbox sandbox);

    AppLoop& loop() override { return loop_; }
    Banners& banners() override { return banners_; }
    IconBadge& badge() override { return badge_; }
    std::unique_ptr<WebWindow> openWindow(const WebWindowSetup& setup,
                                          WebWindowEvents& events) override;
    void flush() override;

private:
    DesktopIdentity identity_;
    std::optional<EngineSandbox> sandbox_; ///< until its outcome is known
    GLibLoop loop_;
    SessionBus bus_;
    NotificationBanners banners_;
    LauncherBadge badge_;
};

} // namespace korvane::runner
