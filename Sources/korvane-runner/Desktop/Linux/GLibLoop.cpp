#include "korvane-runner/Desktop/Linux/GLibLoop.h"

#include <glib-unix.h>
#include <optional>

namespace korvane::runner {

/// Sources outlive the loop when other code goes on running the context; they hold this weakly.
struct GLibLoop::State {
    struct Unref {
        void operator()(GMainLoop* old) const noexcept { g_main_loop_unref(old); }
    };

    std::unique_ptr<GMainLoop, Unref> loop{g_main_loop_new(nullptr, FALSE)};
    std::optional<int> status; ///< set by end(), and nothing is called any more then
};

/// What a source calls; the source owns it.
struct GLibLoop::Call {
    std::function<Watching()> function;
    std::weak_ptr<const State> loop;

    static gboolean dispatch(gpointer self) noexcept {
        const auto& call = *static_cast<Call*>(self);
        const auto state = call.loop.lock();
        if (!state || state->status) return G_SOURCE_REMOVE;
        return call.function() == Watching::goesOn ? G_SOURCE_CONTINUE : G_SOURCE_REMOVE;
    }

    static gboolean dispatchDescriptor(int, GIOCondition, gpointer self) noexcept {
        return dispatch(self);
    }

    static void drop(gpointer self) noexcept { delete static_cast<Call*>(self); }
};

GLibLoop::GLibLoop() : state_(std::make_shared<State>()) {}
GLibLoop::~GLibLoop() = default;

int GLibLoop::run() {
    // A quit before the run would be forgotten.
    if (!state_->status) g_main_loop_run(state_->loop.get());
    return state_->status.value_or(0);
}

void GLibLoop::end(int status) {
    if (state_->status) return;
    state_->status = status;
    g_main_loop_quit(state_->loop.get());
}

void GLibLoop::post(std::function<void()> work) {
    auto once = [work = std::move(work)] {
        work();
        return Watching::ends;
    };
    // Not at the priority of idle work, which a busy window keeps waiting; and not
    // g_main_context_invoke, which calls at once on the loop's own thread.
    g_idle_add_full(G_PRIORITY_DEFAULT, Call::dispatch, new Call{std::move(once), state_},
                    Call::drop);
}

void GLibLoop::after(std::chrono::milliseconds delay, std::function<void()> work) {
    auto once = [work = std::move(work)] {
        work();
        return Watching::ends;
    };
    g_timeout_add_full(G_PRIORITY_DEFAULT, static_cast<guint>(delay.count()), Call::dispatch,
                       new Call{std::move(once), state_}, Call::drop);
}

void GLibLoop::whenReadable(int descriptor, std::function<Watching()> callback) {
    // A pipe whose last writer has gone is hung up and has nothing to read.
    constexpr auto conditions = static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR);
    g_unix_fd_add_full(G_PRIORITY_DEFAULT, descriptor, conditions, Call::dispatchDescriptor,
                       new Call{std::move(callback), state_}, Call::drop);
}

} // namespace korvane::runner
