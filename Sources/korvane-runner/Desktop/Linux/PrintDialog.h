#pragma once

#include "korvane-runner/Desktop/Linux/GObjects.h"
#include "korvane-runner/Desktop/WebWindow.h"

#include <optional>
#include <webkit/webkit.h>

namespace korvane::runner {

/// Prints the page of a view, when a person or a page wants it, after a dialog beside which
/// everything goes on. The engine's own dialog runs a loop of its own, which nothing ends: not the
/// end of the program's.
class PrintDialog {
public:
    /// All must outlive it.
    PrintDialog(GtkWindow* window, WebKitWebView* view, WebWindowEvents& events);
    PrintDialog(const PrintDialog&) = delete;
    PrintDialog& operator=(const PrintDialog&) = delete;
    ~PrintDialog();

    /// For the person. Without effect while the dialog is open.
    void print();

private:
    static gboolean onPrint(WebKitWebView* view, WebKitPrintOperation* operation,
                            PrintDialog* self) noexcept;
    static void onResponse(GtkDialog* dialog, int response, PrintDialog* self) noexcept;

    void open(GObjectPtr<WebKitPrintOperation> operation);
    void close();

    GtkWindow* window_;
    WebKitWebView* view_;
    WebWindowEvents& events_;
    GObjectPtr<WebKitPrintOperation> operation_; ///< what the open dialog is about
    GtkWindow* dialog_ = nullptr;
    bool isOfThePage_ = false; ///< what is open, and not of the person
    std::optional<SignalHandler> response_;
    SignalHandler handler_;
};

} // namespace korvane::runner
