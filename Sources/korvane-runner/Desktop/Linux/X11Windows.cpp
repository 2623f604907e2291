#include "korvane-runner/Desktop/Linux/X11Windows.h"

#include "korvane-runner/Desktop/Linux/WindowManager.h"

#include <cstdlib>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

namespace korvane::runner {

/// Belongs to the thread as well, which nobody waits for.
struct X11Windows::State {
    std::mutex mutex;
    std::optional<std::set<int>> wanted; ///< and not begun with
    bool isAtWork = false;               ///< there is a thread

    /// Returns whether a thread is to be started for it.
    bool want(const std::set<int>& processes) {
        const std::lock_guard lock(mutex);
        wanted = processes;
        return !std::exchange(isAtWork, true);
    }

    /// Absent when there is nothing to do, and from then on no thread.
    std::optional<std::set<int>> next() {
        const std::lock_guard lock(mutex);
        isAtWork = wanted.has_value();
        return std::exchange(wanted, std::nullopt);
    }

    void giveUp() {
        const std::lock_guard lock(mutex);
        wanted.reset();
        isAtWork = false;
    }

    void work() {
        while (const auto processes = next()) windowManager::bringToFront(*processes);
    }
};

X11Windows::X11Windows() : state_(std::make_shared<State>()) {}

void X11Windows::bringToFront(const std::set<int>& processes) {
    const char* display = std::getenv("DISPLAY");
    if (display == nullptr || *display == '\0' || !state_->want(processes)) return;
    try {
        std::thread([state = state_] { state->work(); }).detach();
    } catch (const std::system_error&) {
        state_->giveUp(); // where the system has no thread left the windows stay as they are
    }
}

} // namespace korvane::runner
