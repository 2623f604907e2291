#include "korvane-runner/Desktop/Linux/Questions.h"

#include <utility>

namespace korvane::runner {

Questions::~Questions() {
    if (dialog_) close(false);
}

void Questions::ask(const std::string& question, const std::string& yes,
                    std::function<void(bool)> answer) {
    answer_ = std::move(answer);
    dialog_ = GTK_WINDOW(gtk_message_dialog_new(window_, GTK_DIALOG_MODAL, GTK_MESSAGE_QUESTION,
                                                GTK_BUTTONS_NONE, "%s", question.c_str()));
    auto* dialog = GTK_DIALOG(dialog_);
    gtk_window_set_title(dialog_, gtk_window_get_title(window_));
    gtk_dialog_add_button(dialog, "Cancel", GTK_RESPONSE_CANCEL);
    gtk_dialog_add_button(dialog, yes.c_str(), GTK_RESPONSE_ACCEPT);
    // Whoever is typing as a question comes up has not answered it.
    gtk_dialog_set_default_response(dialog, GTK_RESPONSE_CANCEL);
    handler_.emplace(dialog, "response", onResponse, this);
    gtk_window_present(dialog_);
}

void Questions::close(bool isYes) {
    handler_.reset();
    gtk_window_destroy(std::exchange(dialog_, nullptr));
    std::exchange(answer_, nullptr)(isYes); // last: the next question may come of it
}

void Questions::onResponse(GtkDialog*, int response, Questions* self) noexcept {
    self->close(response == GTK_RESPONSE_ACCEPT);
}

} // namespace korvane::runner
