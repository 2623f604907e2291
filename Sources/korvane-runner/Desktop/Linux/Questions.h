#pragma once

#include "korvane-runner/Desktop/Linux/GObjects.h"

#include <functional>
#include <gtk/gtk.h>
#include <optional>
#include <string>

namespace korvane::runner {

/// Questions to the person before a window, one at a time, while everything else goes on.
class Questions {
public:
    /// `window` must outlive it.
    explicit Questions(GtkWindow* window) : window_(window) {}
    Questions(const Questions&) = delete;
    Questions& operator=(const Questions&) = delete;
    /// Answers what is open with false.
    ~Questions();

    /// `answer` is called once, with true when the person has chosen `yes`. Not to be called before
    /// the question before this one was answered.
    void ask(const std::string& question, const std::string& yes, std::function<void(bool)> answer);

private:
    static void onResponse(GtkDialog* dialog, int response, Questions* self) noexcept;

    void close(bool isYes);

    GtkWindow* window_;
    GtkWindow* dialog_ = nullptr; ///< while a question is open
    std::function<void(bool)> answer_;
    std::optional<SignalHandler> handler_;
};

} // namespace korvane::runner
