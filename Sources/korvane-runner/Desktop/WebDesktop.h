#pragma once

#include "korvane-runner/Desktop/Banners.h"
#include "korvane-runner/Desktop/Desktop.h"
#include "korvane-runner/Desktop/IconBadge.h"
#include "korvane-runner/Desktop/WebWindow.h"

#include <memory>
#include <string>

namespace korvane::runner {

/// As whom a program shows itself.
struct DesktopIdentity {
    std::string id;    ///< of the desktop entry and of the windows: ambrel::desktopId
    std::string name;  ///< for people
    ambrel::Path icon; ///< a PNG file; empty where there is none
};

/// What the host of a web site asks of a desktop. Made when the home is where it is to be for good:
/// what stands behind it reads HOME whenever it likes.
class WebDesktop : public Desktop {
public:
    /// Opens the toolkit and the web engine. Throws DesktopError when there is no display, no
    /// engine, or no way to lock the engine's processes in.
    static std::unique_ptr<WebDesktop> open(DesktopIdentity identity);

    virtual Banners& banners() = 0;
    virtual IconBadge& badge() = 0;

    /// One at a time. `events` must outlive it. Throws DesktopError.
    virtual std::unique_ptr<WebWindow> openWindow(const WebWindowSetup& setup,
                                                  WebWindowEvents& events) = 0;
};

} // namespace korvane::runner
