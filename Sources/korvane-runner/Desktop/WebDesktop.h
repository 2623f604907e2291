#pragma once

#include "korvane-runner/Desktop/AppLoop.h"
#include "korvane-runner/Desktop/Banners.h"
#include "korvane-runner/Desktop/IconBadge.h"
#include "korvane-runner/Desktop/WebWindow.h"

#include <memory>
#include <stdexcept>
#include <string>

namespace korvane::runner {

/// Why there can be no window: a phrase that names what is missing and, where a package holds it,
/// that package.
class DesktopError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// As whom a program shows itself.
struct DesktopIdentity {
    std::string id;    ///< of the desktop entry and of the windows: ambrel::desktopId
    std::string name;  ///< for people
    ambrel::Path icon; ///< a PNG file; empty where there is none
};

/// What the host of a web site asks of a desktop. One a process, made on the main thread, when the
/// home is where it is to be for good: what stands behind it reads HOME whenever it likes.
class WebDesktop {
public:
    /// Opens the toolkit and the web engine. Throws DesktopError when there is no display, no
    /// engine, or no way to lock the engine's processes in.
    static std::unique_ptr<WebDesktop> open(DesktopIdentity identity);

    virtual ~WebDesktop() = default;

    virtual AppLoop& loop() = 0;
    virtual Banners& banners() = 0;
    virtual IconBadge& badge() = 0;

    /// One at a time. `events` must outlive it. Throws DesktopError.
    virtual std::unique_ptr<WebWindow> openWindow(const WebWindowSetup& setup,
                                                  WebWindowEvents& events) = 0;

    /// Waits until what was handed to the desktop is on its way, for a moment at most. For the end.
    virtual void flush() = 0;
};

} // namespace korvane::runner
