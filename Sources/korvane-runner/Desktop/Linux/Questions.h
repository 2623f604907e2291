#pragma once

#include "korvane-runner/Desktop/Linux/GObjects.h"

#include <deque>
#include <functional>
#include <gtk/gtk.h>
#include <optional>
#include <string>

namespace korvane::runner {

/// Questions to the person before a window, one after another, while everything else goes on.
class Questions {
public:
    /// `window` must outlive it.
    explicit Questions(GtkWindow* window) : window_(window) {}
    Questions(const Questions&) = delete;
    Questions& operator=(const Questions&) = delete;
    /// Answers what is open with false.
    ~Questions();

    /// `answer` is called once, with true when the person has chosen `yes`.
    void ask(std::string question, std::string yes, std::function<void(bool)> answer);

private:
    struct Question {
        std::string text;
        std::string yes;
        std::function<void(bool)> answer;
    };

    static void onResponse(GtkDialog* dialog, int response, Questions* self) noexcept;

    void showFirst();
    void close();

    GtkWindow* window_;
    std::deque<Question> open_; ///< the first of them is shown
    GtkWindow* dialog_ = nullptr;
    std::optional<SignalHandler> handler_;
};

} // namespace korvane::runner
