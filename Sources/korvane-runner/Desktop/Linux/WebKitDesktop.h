#pragma once

#include "korvane-runner/Desktop/Linux/EngineSandbox.h"
#include "korvane-runner/Desktop/Linux/GLibLoop.h"
#include "korvane-runner/Desktop/Linux/LauncherBadge.h"
#include "korvane-runner/Desktop/Linux/NotificationBanners.h"
#include "korvane-runner/Desktop/Linux/SessionBus.h"
#include "korvane-runner/Desktop/Linux/StatusNotifierArea.h"
#include "korvane-runner/Desktop/Linux/X11Windows.h"
#include "korvane-runner/Desktop/WebDesktop.h"

namespace korvane::runner {

/// A desktop of Linux, on X11 and on Wayland. Made when the toolkit is open and knows its display.
class WebKitDesktop final : public WebDesktop {
public:
    WebKitDesktop(DesktopIdentity identity, EngineSandbox sandbox);

    AppLoop& loop() override { return loop_; }
    StatusArea& statusArea() override { return statusArea_; }
    ProgramWindows& windows() override { return windows_; }
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
    StatusNotifierArea statusArea_;
    X11Windows windows_;
};

} // namespace korvane::runner
