#pragma once

#include "korvane-runner/Desktop/Linux/GObjects.h"
#include "korvane-runner/Desktop/WindowFrame.h"

#include <gtk/gtk.h>
#include <optional>

namespace korvane::runner {

/// Where windows stand on X11: of the frame that the window manager draws, in pixels of the screen.
/// Other desktops neither tell nor let windows choose.
class X11Position {
public:
    /// Absent for a window that is not shown, and where it is not known.
    static std::optional<WindowFrame::Position> find(GtkWindow* window);

    /// Asks for `window`, which is shown, to be moved there.
    static void apply(GtkWindow* window, const WindowFrame::Position& position);

    /// The monitor on which enough of a title bar there would show to take hold of it; null
    /// where there is none.
    static GObjectPtr<GdkMonitor> findMonitor(GdkDisplay* display,
                                              const WindowFrame::Position& position, int width);

    /// The part of `monitor` that panels and docks leave free, in GDK's units.
    static GdkRectangle workArea(GdkMonitor* monitor);
};

} // namespace korvane::runner
