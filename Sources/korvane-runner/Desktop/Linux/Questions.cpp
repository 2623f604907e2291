#include "korvane-runner/Desktop/Linux/Questions.h"

namespace korvane::runner {

Questions::~Questions() {
    if (dialog_) close();
    for (const auto& question : std::exchange(open_, {})) question.answer(false);
}

void Questions::ask(std::string question, std::string yes, std::function<void(bool)> answer) {
    open_.push_back({std::move(question), std::move(yes), std::move(answer)});
    if (!dialog_) showFirst();
}

void Questions::showFirst() {
    const auto& question = open_.front();
    dialog_ = GTK_WINDOW(gtk_message_dialog_new(window_, GTK_DIALOG_MODAL, GTK_MESSAGE_QUESTION,
                                                GTK_BUTTONS_NONE, "%s", question.text.c_str()));
    auto* dialog = GTK_DIALOG(dialog_);
    gtk_dialog_add_button(dialog, "Cancel", GTK_RESPONSE_CANCEL);
    gtk_dialog_add_button(dialog, question.yes.c_str(), GTK_RESPONSE_ACCEPT);
    // Whoever is typing as a question comes up has not answered it.
    gtk_dialog_set_default_response(dialog, GTK_RESPONSE_CANCEL);
    handler_.emplace(dialog, "response", onResponse, this);
    gtk_window_present(dialog_);
}

void Questions::close() {
    handler_.reset();
    gtk_window_destroy(std::exchange(dialog_, nullptr));
}

void Questions::onResponse(GtkDialog*, int response, Questions* self) noexcept {
    self->close();
    const auto answered = std::move(self->open_.front());
    self->open_.pop_front();
    if (!self->open_.empty()) self->showFirst();
    answered.answer(response == GTK_RESPONSE_ACCEPT);
}

} // namespace korvane::runner
