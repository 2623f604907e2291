#include "korvane-runner/Desktop/Linux/PrintDialog.h"

#include <gtk/gtkunixprint.h>

namespace korvane::runner {

namespace {

/// A file is to go where a person finds it, not to wherever the program was started.
void proposeFolder(GtkPrintUnixDialog* dialog) {
    const auto* documents = g_get_user_special_dir(G_USER_DIRECTORY_DOCUMENTS);
    const GObjectPtr<GtkPrintSettings> settings(gtk_print_settings_new());
    gtk_print_settings_set(settings.get(), GTK_PRINT_SETTINGS_OUTPUT_DIR,
                           documents ? documents : g_get_home_dir());
    gtk_print_unix_dialog_set_settings(dialog, settings.get());
}

} // namespace

PrintDialog::PrintDialog(GtkWindow* window, WebKitWebView* view, WebWindowEvents& events)
    : window_(window), view_(view), events_(events), handler_(view, "print", onPrint, this) {}

PrintDialog::~PrintDialog() {
    if (dialog_) close();
}

void PrintDialog::print() {
    if (dialog_) return;
    isOfThePage_ = false;
    open(GObjectPtr<WebKitPrintOperation>(webkit_print_operation_new(view_)));
}

gboolean PrintDialog::onPrint(WebKitWebView*, WebKitPrintOperation* operation,
                              PrintDialog* self) noexcept {
    if (self->dialog_ || !self->events_.printWanted()) return TRUE;
    self->isOfThePage_ = true;
    self->open(retained(operation));
    return TRUE;
}

void PrintDialog::open(GObjectPtr<WebKitPrintOperation> operation) {
    operation_ = std::move(operation);
    dialog_ = GTK_WINDOW(gtk_print_unix_dialog_new("Print", window_));
    gtk_window_set_modal(dialog_, TRUE);
    proposeFolder(GTK_PRINT_UNIX_DIALOG(dialog_));
    gtk_print_unix_dialog_set_manual_capabilities(
        GTK_PRINT_UNIX_DIALOG(dialog_),
        static_cast<GtkPrintCapabilities>(GTK_PRINT_CAPABILITY_PAGE_SET |
                                          GTK_PRINT_CAPABILITY_COPIES |
                                          GTK_PRINT_CAPABILITY_SCALE));
    gtk_print_unix_dialog_set_embed_page_setup(GTK_PRINT_UNIX_DIALOG(dialog_), TRUE);
    response_.emplace(dialog_, "response", onResponse, this);
    gtk_window_present(dialog_);
}

void PrintDialog::close() {
    response_.reset();
    gtk_window_destroy(std::exchange(dialog_, nullptr));
    operation_.reset();
}

void PrintDialog::onResponse(GtkDialog* dialog, int response, PrintDialog* self) noexcept {
    const bool isPrinted = response == GTK_RESPONSE_OK;
    if (isPrinted) {
        auto* chosen = GTK_PRINT_UNIX_DIALOG(dialog);
        const GObjectPtr<GtkPrintSettings> settings(gtk_print_unix_dialog_get_settings(chosen));
        webkit_print_operation_set_print_settings(self->operation_.get(), settings.get());
        webkit_print_operation_set_page_setup(self->operation_.get(),
                                              gtk_print_unix_dialog_get_page_setup(chosen));
        webkit_print_operation_print(self->operation_.get());
    }
    self->close();
    if (self->isOfThePage_) self->events_.printAnswered(isPrinted);
}

} // namespace korvane::runner
