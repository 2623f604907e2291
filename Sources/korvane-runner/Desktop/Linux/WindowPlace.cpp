#include "korvane-runner/Desktop/Linux/WindowPlace.h"

#include "korvane-runner/Desktop/Linux/X11Position.h"

#include <algorithm>

namespace korvane::runner {

namespace {

/// The monitor for a window whose place is the window manager's choice.
GObjectPtr<GdkMonitor> firstMonitor(GdkDisplay* display) {
    return GObjectPtr<GdkMonitor>(
        GDK_MONITOR(g_list_model_get_item(gdk_display_get_monitors(display), 0)));
}

/// `length` if so much is free, else as much as there is less a title bar.
int fitting(int length, int free) {
    constexpr int decoration = 40; // of a height that is not known before the window is shown
    if (length <= free || free <= decoration) return length;
    return free - decoration;
}

} // namespace

WindowPlace::WindowPlace(GtkWindow* window, const WindowFrame& frame)
    : window_(window), wanted_(frame.position), handler_(window, "map", onMap, this) {
    auto* display = gtk_widget_get_display(GTK_WIDGET(window));
    auto monitor = firstMonitor(display);
    if (wanted_) {
        if (auto own = X11Position::findMonitor(display, *wanted_, frame.width))
            monitor = std::move(own);
        else
            wanted_.reset();
    }
    auto width = frame.width;
    auto height = frame.height;
    if (monitor) {
        const auto area = X11Position::workArea(monitor.get());
        width = std::min(width, area.width);
        height = fitting(height, area.height);
    }
    gtk_window_set_default_size(window, width, height);
    if (frame.maximized) gtk_window_maximize(window);
}

// The window manager chooses a place for each new window; being asked behind that it moves it,
// still before anything is drawn.
void WindowPlace::onMap(GtkWidget*, WindowPlace* self) noexcept {
    if (!self->wanted_) return;
    X11Position::apply(self->window_, *self->wanted_);
}

WindowFrame WindowPlace::frame() const {
    WindowFrame frame;
    // The size to go back to from a window that is maximized or fills the screen.
    gtk_window_get_default_size(window_, &frame.width, &frame.height);
    frame.maximized = gtk_window_is_maximized(window_) != FALSE;
    frame.position = position();
    return frame;
}

// A window that fills the screen stands in its corner, and where it stood before nobody knows but
// from the time it was opened.
std::optional<WindowFrame::Position> WindowPlace::position() const {
    const auto now = X11Position::find(window_);
    const bool fills = gtk_window_is_maximized(window_) || gtk_window_is_fullscreen(window_);
    if (!now || !wanted_ || !fills) return now;
    auto* display = gtk_widget_get_display(GTK_WIDGET(window_));
    auto* monitor =
        gdk_display_get_monitor_at_surface(display, gtk_native_get_surface(GTK_NATIVE(window_)));
    const int width = gtk_widget_get_width(GTK_WIDGET(window_));
    return X11Position::findMonitor(display, *wanted_, width).get() == monitor ? wanted_ : now;
}

} // namespace korvane::runner
