#pragma once

#include "korvane-runner/Desktop/Linux/GObjects.h"

#include <optional>
#include <webkit/webkit.h>

namespace korvane::runner {

class FindBar;
class PageLoads;
class PrintDialog;

/// What the keys and the further buttons of the mouse do. Most keys count only where the page has
/// not taken them for itself, as in any browser; not those for closing and for back and forward.
class WindowKeys {
public:
    /// What there is to be done. All must outlive this.
    struct Parts {
        GtkWindow* window;
        GtkBox* content;
        WebKitWebView* view;
        PageLoads& loads;
        PrintDialog& print;
    };

    explicit WindowKeys(const Parts& parts);
    WindowKeys(const WindowKeys&) = delete;
    WindowKeys& operator=(const WindowKeys&) = delete;
    ~WindowKeys();

private:
    struct Key;
    template <bool (WindowKeys::*action)()>
    static gboolean run(GtkWidget* widget, GVariant* arguments, gpointer self) noexcept;
    static void onPressed(GtkGestureClick* gesture, int presses, double x, double y,
                          WindowKeys* self) noexcept;

    void addKeys();
    void addButtons();
    bool close();
    bool back();
    bool forward();
    bool reload();
    bool reloadPastCache();
    bool zoomIn();
    bool zoomOut();
    bool zoomToNormal();
    bool find();
    bool print();
    bool toggleFullScreen();
    bool leaveFullScreen();

    Parts parts_;
    std::unique_ptr<FindBar> findBar_; ///< made when it is first wanted
    std::optional<SignalHandler> buttons_;
};

} // namespace korvane::runner
