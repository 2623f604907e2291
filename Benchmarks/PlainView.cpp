// plain-view URL
//
// The least that shows a page with WebKitGTK: what web-window compares a web instance with.

#include <cstdio>
#include <webkit/webkit.h>

namespace {

constexpr int width = 1160;
constexpr int height = 780;

gboolean endLoop(GtkWindow*, gpointer loop) {
    g_main_loop_quit(static_cast<GMainLoop*>(loop));
    return FALSE;
}

} // namespace

int main(int count, char** words) {
    if (count != 2) {
        std::fputs("usage: plain-view URL\n", stderr);
        return 2;
    }
    g_set_prgname("plain-view");
    if (gtk_init_check() == FALSE) {
        std::fputs("plain-view: no display\n", stderr);
        return 1;
    }
    GMainLoop* const loop = g_main_loop_new(nullptr, FALSE);
    GtkWidget* const window = gtk_window_new();
    GtkWidget* const view = webkit_web_view_new();
    gtk_window_set_default_size(GTK_WINDOW(window), width, height);
    gtk_window_set_child(GTK_WINDOW(window), view);
    g_signal_connect(window, "close-request", G_CALLBACK(endLoop), loop);
    webkit_web_view_load_uri(WEBKIT_WEB_VIEW(view), words[1]);
    gtk_window_present(GTK_WINDOW(window));
    g_main_loop_run(loop);
    return 0;
}
