#pragma once

#include "korvane-runner/Desktop/Linux/Downloads.h"
#include "korvane-runner/Desktop/Linux/PageLoads.h"
#include "korvane-runner/Desktop/Linux/PageMessages.h"
#include "korvane-runner/Desktop/Linux/PageSteps.h"
#include "korvane-runner/Desktop/Linux/PageView.h"
#include "korvane-runner/Desktop/Linux/Permissions.h"
#include "korvane-runner/Desktop/Linux/PrintDialog.h"
#include "korvane-runner/Desktop/Linux/Questions.h"
#include "korvane-runner/Desktop/Linux/SpellChecking.h"
#include "korvane-runner/Desktop/Linux/WindowKeys.h"
#include "korvane-runner/Desktop/Linux/WindowPlace.h"
#include "korvane-runner/Desktop/WebWindow.h"

namespace korvane::runner {

/// A window of GTK with a view of WebKitGTK.
class WebKitWindow final : public WebWindow {
public:
    /// It is shown in the next turn of the loop. `icon` is a PNG file or empty.
    WebKitWindow(const WebWindowSetup& setup, const ambrel::Path& icon, WebWindowEvents& events);
    WebKitWindow(const WebKitWindow&) = delete;
    WebKitWindow& operator=(const WebKitWindow&) = delete;
    ~WebKitWindow() override;

    void setTitle(const std::string& title) override;
    void load(const std::string& url) override;
    void showPage(const std::string& html, const std::string& url) override;
    void ask(const std::string& question, const std::string& yes,
             std::function<void(bool)> answer) override;
    void present() override;
    WindowFrame frame() const override;

private:
    struct Destroy {
        void operator()(GtkWindow* window) const noexcept { gtk_window_destroy(window); }
    };

    static gboolean onShow(gpointer self) noexcept;
    static void onMap(GtkWidget* window, WebKitWindow* self) noexcept;
    static void onFocusMoved(GtkWindow* window, GParamSpec* property, WebKitWindow* self) noexcept;
    static gboolean onCloseRequest(GtkWindow* window, WebKitWindow* self) noexcept;
    static void onClose(WebKitWebView* view, WebKitWindow* self) noexcept;

    WebWindowEvents& events_;
    ambrel::Path icon_;
    std::unique_ptr<GtkWindow, Destroy> window_;
    PageView page_;
    GtkBox* content_; ///< the view, and above it what is shown now and then
    PageLoads loads_;
    PageSteps steps_;
    PageMessages messages_;
    Downloads downloads_;
    Permissions permissions_;
    PrintDialog print_;
    WindowKeys keys_;
    SpellChecking spelling_;
    WindowPlace place_;
    Questions questions_;
    std::array<SignalHandler, 4> handlers_;
    guint showing_ = 0;
};

} // namespace korvane::runner
