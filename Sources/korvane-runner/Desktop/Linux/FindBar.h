#pragma once

#include "korvane-runner/Desktop/Linux/GObjects.h"

#include <vector>
#include <webkit/webkit.h>

namespace korvane::runner {

/// A bar above a view that finds text in its page.
class FindBar {
public:
    /// Puts the bar into `box`. Both must outlive it.
    FindBar(GtkBox* box, WebKitWebView* view);
    FindBar(const FindBar&) = delete;
    FindBar& operator=(const FindBar&) = delete;
    ~FindBar() = default;

    /// Shows it, ready for typing.
    void open();

private:
    template <void (FindBar::*action)()>
    static gboolean onKey(GtkWidget* widget, GVariant* arguments, gpointer self) noexcept;
    template <void (FindBar::*action)()> static void on(GObject* object, FindBar* self) noexcept;
    static void onModeChanged(GObject* bar, GParamSpec* property, FindBar* self) noexcept;
    static void onCounted(WebKitFindController* find, guint count, FindBar* self) noexcept;

    GtkWidget* makeButton(const char* icon, const char* hint);
    GtkWidget* makeContent();
    void addKeys();
    void search();
    void next();
    void previous();
    void close();
    void sayNotFound();

    WebKitWebView* view_;
    WebKitFindController* find_;
    GtkSearchBar* bar_;
    GtkEditable* entry_;
    GtkLabel* outcome_;
    GtkWidget* previous_;
    GtkWidget* next_;
    std::vector<SignalHandler> handlers_;
};

} // namespace korvane::runner
