#include "korvane-runner/Desktop/Linux/WebKitWindow.h"

namespace korvane::runner {

namespace {

GtkBox* makeContent(GtkWindow* window, WebKitWebView* view) {
    auto* content = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
    gtk_box_append(GTK_BOX(content), GTK_WIDGET(view));
    gtk_window_set_child(window, content);
    return GTK_BOX(content);
}

/// The picture for title bars and lists of windows. GTK's own way would look in the person's icon
/// theme, where an instance's icon is not.
void setIcon(GtkWindow* window, const ambrel::Path& icon) {
    auto* surface = gtk_native_get_surface(GTK_NATIVE(window));
    if (icon.empty() || !GDK_IS_TOPLEVEL(surface)) return;
    const GObjectPtr<GdkTexture> texture(gdk_texture_new_from_filename(icon.c_str(), nullptr));
    if (!texture) return; // a window without a picture is one all the same
    GList list{texture.get(), nullptr, nullptr};
    gdk_toplevel_set_icon_list(GDK_TOPLEVEL(surface), &list);
}

} // namespace

WebKitWindow::WebKitWindow(const WebWindowSetup& setup, const ambrel::Path& icon,
                           WebWindowEvents& events)
    : events_(events), icon_(icon), window_(GTK_WINDOW(gtk_window_new())), page_(setup),
      content_(makeContent(window_.get(), page_.view())),
      loads_(page_.view(), page_.content(), events), steps_(page_.view(), loads_, events),
      messages_(page_.content(), setup, loads_, events), downloads_(page_.session(), events),
      permissions_(page_.view(), events), print_(window_.get(), page_.view(), events),
      keys_({window_.get(), content_, page_.view(), loads_, print_}),
      spelling_(window_.get(), page_.view()), place_(window_.get(), setup.frame),
      questions_(window_.get()), handlers_{SignalHandler(window_.get(), "map", onMap, this),
                                           SignalHandler(window_.get(), "notify::focus-widget",
                                                         onFocusMoved, this),
                                           SignalHandler(window_.get(), "close-request",
                                                         onCloseRequest, this),
                                           SignalHandler(page_.view(), "close", onClose, this)} {
    setTitle(setup.title);
    gtk_widget_grab_focus(GTK_WIDGET(page_.view()));
    // The engine starts its processes at the first load, which is not to wait for the window.
    showing_ = g_idle_add_full(G_PRIORITY_DEFAULT, onShow, this, nullptr);
}

WebKitWindow::~WebKitWindow() {
    if (showing_ != 0) g_source_remove(showing_);
}

void WebKitWindow::setTitle(const std::string& title) {
    gtk_window_set_title(window_.get(), title.c_str());
}

void WebKitWindow::load(const std::string& url) { loads_.load(url); }

void WebKitWindow::showPage(const std::string& html, const std::string& url) {
    loads_.showPage(html, url);
}

void WebKitWindow::ask(const std::string& question, const std::string& yes,
                       std::function<void(bool)> answer) {
    questions_.ask(question, yes, std::move(answer));
}

void WebKitWindow::present() { gtk_window_present(window_.get()); }

WindowFrame WebKitWindow::frame() const { return place_.frame(); }

gboolean WebKitWindow::onShow(gpointer data) noexcept {
    auto* self = static_cast<WebKitWindow*>(data);
    self->showing_ = 0;
    self->present();
    return G_SOURCE_REMOVE;
}

void WebKitWindow::onMap(GtkWidget*, WebKitWindow* self) noexcept {
    setIcon(self->window_.get(), self->icon_);
}

// Behind the last link of a page the engine gives the focus away: to nobody, or to the text field
// in the view that it looks keys up with. None would reach the page any more. Its dialogs in the
// view have entries and boxes of their own.
void WebKitWindow::onFocusMoved(GtkWindow* window, GParamSpec*, WebKitWindow* self) noexcept {
    auto* view = GTK_WIDGET(self->page_.view());
    auto* focus = gtk_window_get_focus(window);
    const bool isLost = !focus || (GTK_IS_TEXT_VIEW(focus) && gtk_widget_get_parent(focus) == view);
    if (isLost) gtk_widget_grab_focus(view);
}

// The page may ask the person to stay; onClose is called where it does not.
gboolean WebKitWindow::onCloseRequest(GtkWindow*, WebKitWindow* self) noexcept {
    webkit_web_view_try_close(self->page_.view());
    return TRUE;
}

void WebKitWindow::onClose(WebKitWebView*, WebKitWindow* self) noexcept { self->events_.closed(); }

} // namespace korvane::runner
