#include "korvane-runner/Desktop/Linux/WindowKeys.h"

#include "korvane-runner/Desktop/Linux/FindBar.h"
#include "korvane-runner/Desktop/Linux/PageLoads.h"
#include "korvane-runner/Desktop/Linux/PrintDialog.h"
#include "korvane-runner/Desktop/Linux/Zoom.h"

namespace korvane::runner {

struct WindowKeys::Key {
    guint value;
    int modifiers;
    GtkShortcutFunc action;
};

namespace {

constexpr int none = 0;
constexpr int control = GDK_CONTROL_MASK;
constexpr int alt = GDK_ALT_MASK;

GtkShortcutController* makeController(GtkWindow* window, GtkPropagationPhase phase) {
    auto* controller = gtk_shortcut_controller_new();
    gtk_event_controller_set_propagation_phase(controller, phase);
    gtk_widget_add_controller(GTK_WIDGET(window), controller); // takes it over
    return GTK_SHORTCUT_CONTROLLER(controller);
}

} // namespace

template <bool (WindowKeys::*action)()>
gboolean WindowKeys::run(GtkWidget*, GVariant*, gpointer self) noexcept {
    return (static_cast<WindowKeys*>(self)->*action)();
}

WindowKeys::WindowKeys(const Parts& parts) : parts_(parts) {
    addKeys();
    addButtons();
}

WindowKeys::~WindowKeys() = default;

void WindowKeys::addKeys() {
    using W = WindowKeys;
    static constexpr Key ours[] = {
        {GDK_KEY_q, control, run<&W::close>},
        {GDK_KEY_w, control, run<&W::close>},
        // The engine scrolls by arrows, with Alt as well, and would leave nothing of them.
        {GDK_KEY_Left, alt, run<&W::back>},
        {GDK_KEY_KP_Left, alt, run<&W::back>},
        {GDK_KEY_Right, alt, run<&W::forward>},
        {GDK_KEY_KP_Right, alt, run<&W::forward>},
    };
    // The engine hands a key on that the page has left.
    static constexpr Key afterThePage[] = {
        {GDK_KEY_Back, none, run<&W::back>},
        {GDK_KEY_Forward, none, run<&W::forward>},
        {GDK_KEY_r, control, run<&W::reload>},
        {GDK_KEY_F5, none, run<&W::reload>},
        {GDK_KEY_r, control | GDK_SHIFT_MASK, run<&W::reloadPastCache>},
        {GDK_KEY_F5, control, run<&W::reloadPastCache>},
        {GDK_KEY_plus, control, run<&W::zoomIn>},
        {GDK_KEY_equal, control, run<&W::zoomIn>},
        {GDK_KEY_KP_Add, control, run<&W::zoomIn>},
        {GDK_KEY_minus, control, run<&W::zoomOut>},
        {GDK_KEY_KP_Subtract, control, run<&W::zoomOut>},
        {GDK_KEY_0, control, run<&W::zoomToNormal>},
        {GDK_KEY_KP_0, control, run<&W::zoomToNormal>},
        {GDK_KEY_KP_Insert, control, run<&W::zoomToNormal>},
        {GDK_KEY_f, control, run<&W::find>},
        {GDK_KEY_p, control, run<&W::print>},
        {GDK_KEY_F11, none, run<&W::toggleFullScreen>},
        {GDK_KEY_Escape, none, run<&W::leaveFullScreen>},
    };
    const auto add = [this](GtkPropagationPhase phase, const auto& keys) {
        auto* controller = makeController(parts_.window, phase);
        for (const auto& key : keys)
            gtk_shortcut_controller_add_shortcut(
                controller,
                gtk_shortcut_new(
                    gtk_keyval_trigger_new(key.value, static_cast<GdkModifierType>(key.modifiers)),
                    gtk_callback_action_new(key.action, this, nullptr)));
    };
    add(GTK_PHASE_CAPTURE, ours);
    add(GTK_PHASE_BUBBLE, afterThePage);
}

void WindowKeys::addButtons() {
    auto* gesture = gtk_gesture_click_new();
    gtk_gesture_single_set_button(GTK_GESTURE_SINGLE(gesture), 0); // each of them
    gtk_event_controller_set_propagation_phase(GTK_EVENT_CONTROLLER(gesture), GTK_PHASE_CAPTURE);
    buttons_.emplace(gesture, "pressed", onPressed, this);
    gtk_widget_add_controller(GTK_WIDGET(parts_.window), GTK_EVENT_CONTROLLER(gesture));
}

void WindowKeys::onPressed(GtkGestureClick* gesture, int, double, double,
                           WindowKeys* self) noexcept {
    constexpr guint backButton = 8;
    constexpr guint forwardButton = 9;
    const auto button = gtk_gesture_single_get_current_button(GTK_GESTURE_SINGLE(gesture));
    if (button == backButton) self->back();
    if (button == forwardButton) self->forward();
    if (button == backButton || button == forwardButton)
        gtk_gesture_set_state(GTK_GESTURE(gesture), GTK_EVENT_SEQUENCE_CLAIMED);
}

bool WindowKeys::close() {
    gtk_window_close(parts_.window);
    return true;
}

bool WindowKeys::back() {
    webkit_web_view_go_back(parts_.view);
    return true;
}

bool WindowKeys::forward() {
    webkit_web_view_go_forward(parts_.view);
    return true;
}

bool WindowKeys::reload() {
    parts_.loads.reload(PageLoads::Cache::used);
    return true;
}

bool WindowKeys::reloadPastCache() {
    parts_.loads.reload(PageLoads::Cache::passedOver);
    return true;
}

bool WindowKeys::zoomIn() {
    webkit_web_view_set_zoom_level(parts_.view,
                                   zoom::above(webkit_web_view_get_zoom_level(parts_.view)));
    return true;
}

bool WindowKeys::zoomOut() {
    webkit_web_view_set_zoom_level(parts_.view,
                                   zoom::below(webkit_web_view_get_zoom_level(parts_.view)));
    return true;
}

bool WindowKeys::zoomToNormal() {
    webkit_web_view_set_zoom_level(parts_.view, zoom::normal);
    return true;
}

bool WindowKeys::find() {
    if (!findBar_) findBar_ = std::make_unique<FindBar>(parts_.content, parts_.view);
    findBar_->open();
    return true;
}

bool WindowKeys::print() {
    parts_.print.print();
    return true;
}

bool WindowKeys::toggleFullScreen() {
    if (!leaveFullScreen()) gtk_window_fullscreen(parts_.window);
    return true;
}

/// Whether it did fill the screen; else the key is somebody else's.
bool WindowKeys::leaveFullScreen() {
    if (!gtk_window_is_fullscreen(parts_.window)) return false;
    gtk_window_unfullscreen(parts_.window);
    return true;
}

} // namespace korvane::runner
