#include "korvane-runner/Desktop/Linux/X11Position.h"

#include <X11/Xatom.h>
#include <gdk/x11/gdkx.h>

namespace korvane::runner {

namespace {

/// A window that has gone is no reason to end, as the X library would have it.
class ErrorTrap {
public:
    explicit ErrorTrap(GdkDisplay* display) : display_(display) {
        gdk_x11_display_error_trap_push(display);
    }
    ErrorTrap(const ErrorTrap&) = delete;
    ErrorTrap& operator=(const ErrorTrap&) = delete;
    ~ErrorTrap() { gdk_x11_display_error_trap_pop_ignored(display_); }

private:
    GdkDisplay* display_;
};

struct XFreer {
    void operator()(unsigned char* memory) const noexcept { XFree(memory); }
};

struct Extents {
    long left = 0;
    long top = 0;
};

/// The X window behind `window`; absent on other desktops and before there is one.
struct Handle {
    GdkDisplay* display;
    Display* connection;
    Window id;
    Window root;

    static std::optional<Handle> find(GtkWindow* window) {
        auto* surface = gtk_native_get_surface(GTK_NATIVE(window));
        if (!surface || !GDK_IS_X11_SURFACE(surface)) return std::nullopt;
        auto* display = gdk_surface_get_display(surface);
        return Handle{display, gdk_x11_display_get_xdisplay(display),
                      gdk_x11_surface_get_xid(surface), gdk_x11_display_get_xrootwindow(display)};
    }
};

/// What the window manager has drawn around the window's content.
Extents frameExtents(const Handle& handle) {
    constexpr long count = 4; // left, right, top, bottom
    const auto property =
        gdk_x11_get_xatom_by_name_for_display(handle.display, "_NET_FRAME_EXTENTS");
    Atom type = 0;
    int format = 0;
    unsigned long length = 0;
    unsigned long remaining = 0;
    unsigned char* data = nullptr;
    XGetWindowProperty(handle.connection, handle.id, property, 0, count, False, XA_CARDINAL, &type,
                       &format, &length, &remaining, &data);
    const std::unique_ptr<unsigned char, XFreer> owner(data);
    if (type != XA_CARDINAL || format != 32 || length != count) return {};
    const auto* numbers = reinterpret_cast<const long*>(data); // so the library lays out 32 bits
    return {numbers[0], numbers[2]};
}

GListModel* monitors(GdkDisplay* display) { return gdk_display_get_monitors(display); }

bool showsTitleBar(GdkMonitor* monitor, const WindowFrame::Position& position, int width) {
    constexpr int height = 24;
    constexpr int enoughWidth = 64;
    constexpr int enoughHeight = 16;
    const auto area = X11Position::workArea(monitor);
    const int scale = gdk_monitor_get_scale_factor(monitor);
    const GdkRectangle bar{position.x / scale, position.y / scale, width, height};
    GdkRectangle seen{};
    return gdk_rectangle_intersect(&area, &bar, &seen) && seen.width >= enoughWidth &&
           seen.height >= enoughHeight;
}

} // namespace

std::optional<WindowFrame::Position> X11Position::find(GtkWindow* window) {
    const auto handle = Handle::find(window);
    if (!handle || !gtk_widget_get_mapped(GTK_WIDGET(window))) return std::nullopt;
    const ErrorTrap trap(handle->display);
    int x = 0;
    int y = 0;
    Window child = 0;
    if (!XTranslateCoordinates(handle->connection, handle->id, handle->root, 0, 0, &x, &y, &child))
        return std::nullopt;
    const auto extents = frameExtents(*handle);
    return WindowFrame::Position{x - static_cast<int>(extents.left),
                                 y - static_cast<int>(extents.top)};
}

void X11Position::apply(GtkWindow* window, const WindowFrame::Position& position) {
    const auto handle = Handle::find(window);
    if (!handle) return;
    const ErrorTrap trap(handle->display);
    // With the gravity said, it is the frame's corner that comes to stand there.
    constexpr long hasX = 1L << 8;
    constexpr long hasY = 1L << 9;
    constexpr long fromProgram = 1L << 12;
    XEvent event{};
    event.xclient.type = ClientMessage;
    event.xclient.window = handle->id;
    event.xclient.message_type =
        gdk_x11_get_xatom_by_name_for_display(handle->display, "_NET_MOVERESIZE_WINDOW");
    event.xclient.format = 32;
    event.xclient.data.l[0] = NorthWestGravity | hasX | hasY | fromProgram;
    event.xclient.data.l[1] = position.x;
    event.xclient.data.l[2] = position.y;
    XSendEvent(handle->connection, handle->root, False,
               SubstructureNotifyMask | SubstructureRedirectMask, &event);
}

GObjectPtr<GdkMonitor> X11Position::findMonitor(GdkDisplay* display,
                                                const WindowFrame::Position& position, int width) {
    if (!GDK_IS_X11_DISPLAY(display)) return nullptr;
    for (guint i = 0; i < g_list_model_get_n_items(monitors(display)); ++i) {
        GObjectPtr<GdkMonitor> monitor(GDK_MONITOR(g_list_model_get_item(monitors(display), i)));
        if (showsTitleBar(monitor.get(), position, width)) return monitor;
    }
    return nullptr;
}

GdkRectangle X11Position::workArea(GdkMonitor* monitor) {
    GdkRectangle area{};
    if (GDK_IS_X11_MONITOR(monitor))
        gdk_x11_monitor_get_workarea(monitor, &area);
    else
        gdk_monitor_get_geometry(monitor, &area);
    return area;
}

} // namespace korvane::runner
