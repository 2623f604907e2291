#pragma once

#include "korvane-runner/Desktop/Linux/GObjects.h"
#include "korvane-runner/Desktop/WindowFrame.h"

#include <gtk/gtk.h>

namespace korvane::runner {

/// How large a window is and where it stands.
class WindowPlace {
public:
    /// Gives `window`, which is not shown yet and must outlive this, the place that `frame` says,
    /// made to fit the screen. A position where nobody would find it is ignored.
    WindowPlace(GtkWindow* window, const WindowFrame& frame);
    WindowPlace(const WindowPlace&) = delete;
    WindowPlace& operator=(const WindowPlace&) = delete;
    ~WindowPlace() = default;

    WindowFrame frame() const;

private:
    static void onMap(GtkWidget* window, WindowPlace* self) noexcept;

    std::optional<WindowFrame::Position> position() const;

    GtkWindow* window_;
    std::optional<WindowFrame::Position> wanted_;
    SignalHandler handler_;
};

} // namespace korvane::runner
