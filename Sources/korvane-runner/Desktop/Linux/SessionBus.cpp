#include "korvane-runner/Desktop/Linux/SessionBus.h"

#include "korvane-runner/Desktop/Linux/BusAddress.h"
#include "korvane-runner/Desktop/Linux/GObjects.h"
#include "korvane-runner/Desktop/Linux/GVariants.h"

#include <optional>
#include <utility>
#include <vector>

namespace korvane::runner {

/// Calls of GIO's may come when the bus has gone; they hold this weakly.
struct SessionBus::State {
    using Work = std::function<void(GDBusConnection*)>;

    std::optional<GObjectPtr<GDBusConnection>> bus; ///< null: there is none; absent: not known yet
    std::vector<Work> waiting;                      ///< for the bus, in order
    std::vector<guint> subscriptions;
    std::vector<guint> watchedNames;
    int outstanding = 0; ///< answers of GIO's

    State() = default;
    State(const State&) = delete;
    State& operator=(const State&) = delete;
    ~State() {
        for (const guint id : subscriptions) {
            g_dbus_connection_signal_unsubscribe(bus->get(), id);
        }
        for (const guint id : watchedNames) g_bus_unwatch_name(id);
    }

    /// Null when it has ended, too: GIO writes to standard error what it cannot send.
    GDBusConnection* open() const {
        auto* const connection = bus->get();
        const bool isOpen =
            connection != nullptr && g_dbus_connection_is_closed(connection) == FALSE;
        return isOpen ? connection : nullptr;
    }

    void whenKnown(Work work) {
        if (bus) {
            work(open());
        } else {
            waiting.push_back(std::move(work));
        }
    }

    void become(GDBusConnection* connection) {
        // A bus that ends is no reason to end by SIGTERM in the middle of whatever is done.
        if (connection != nullptr) g_dbus_connection_set_exit_on_close(connection, FALSE);
        bus.emplace(connection);
        for (const auto& work : std::exchange(waiting, {})) work(connection);
    }

    /// Runs the default context until GIO has answered all or `isOver`.
    void serve(const bool& isOver) const {
        while (outstanding > 0 && !isOver) g_main_context_iteration(nullptr, TRUE);
    }
};

namespace {

using Finished = std::function<void(GObject* source, GAsyncResult* result)>;

void onFinished(GObject* source, GAsyncResult* result, gpointer self) noexcept {
    const std::unique_ptr<Finished> finished(static_cast<Finished*>(self));
    (*finished)(source, result);
}

/// What GIO is to call with onFinished: `finished`, while `state` is there.
template <class State, class Function>
Finished* counted(const std::shared_ptr<State>& state, Function finished) {
    ++state->outstanding;
    return new Finished([weak = std::weak_ptr(state), finished](auto* source, auto* result) {
        const auto there = weak.lock();
        if (there) --there->outstanding;
        finished(there.get(), source, result);
    });
}

void onSignal(GDBusConnection*, const char*, const char*, const char*, const char*, GVariant*,
              gpointer changed) noexcept {
    (*static_cast<std::function<void()>*>(changed))();
}

void dropFunction(gpointer function) noexcept {
    delete static_cast<std::function<void()>*>(function);
}

using Owned = std::function<void(const char* owner)>;

void onOwned(GDBusConnection*, const char*, const char* owner, gpointer owned) noexcept {
    (*static_cast<Owned*>(owned))(owner);
}

void dropOwned(gpointer owned) noexcept { delete static_cast<Owned*>(owned); }

gboolean onTimeOver(gpointer isOver) noexcept {
    *static_cast<bool*>(isOver) = true;
    return G_SOURCE_CONTINUE;
}

std::shared_ptr<GVariant> shared(GVariant* arguments) {
    return {g_variant_ref_sink(arguments), g_variant_unref};
}

} // namespace

SessionBus::SessionBus() : state_(std::make_shared<State>()) {
    if (!hasSessionBusAddress()) {
        state_->become(nullptr);
        return;
    }
    g_bus_get(G_BUS_TYPE_SESSION, nullptr, onFinished,
              counted(state_, [](State* state, GObject*, GAsyncResult* result) {
                  GObjectPtr<GDBusConnection> connection(g_bus_get_finish(result, nullptr));
                  if (state != nullptr) state->become(connection.release());
              }));
}

SessionBus::~SessionBus() = default;

void SessionBus::call(const char* service, const Member& method, GVariant* arguments,
                      const char* answerType, const Answered& answered) {
    const auto onAnswer = [answered](State* state, GObject* bus, GAsyncResult* result) {
        const GVariantPtr answer(
            g_dbus_connection_call_finish(G_DBUS_CONNECTION(bus), result, nullptr));
        if (state != nullptr) answered(answer.get());
    };
    const std::weak_ptr weak = state_;
    state_->whenKnown([=, held = shared(arguments)](GDBusConnection* bus) {
        if (bus == nullptr) return answered ? answered(nullptr) : void();
        g_dbus_connection_call(bus, service, method.path, method.interface, method.name, held.get(),
                               G_VARIANT_TYPE(answerType), G_DBUS_CALL_FLAGS_NONE, -1, nullptr,
                               answered ? onFinished : nullptr,
                               answered ? counted(weak.lock(), onAnswer) : nullptr);
    });
}

void SessionBus::emit(const Member& signal, GVariant* arguments) {
    state_->whenKnown([signal, held = shared(arguments)](GDBusConnection* bus) {
        if (bus == nullptr) return;
        g_dbus_connection_emit_signal(bus, nullptr, signal.path, signal.interface, signal.name,
                                      held.get(), nullptr);
    });
}

void SessionBus::whenOwnerChanges(const char* service, std::function<void()> changed) {
    state_->whenKnown(
        [service, changed = std::move(changed), state = state_.get()](GDBusConnection* bus) {
            if (bus == nullptr) return;
            state->subscriptions.push_back(g_dbus_connection_signal_subscribe(
                bus, "org.freedesktop.DBus", "org.freedesktop.DBus", "NameOwnerChanged",
                "/org/freedesktop/DBus", service, G_DBUS_SIGNAL_FLAGS_NONE, onSignal,
                new std::function<void()>(changed), dropFunction));
        });
}

void SessionBus::whenOwned(const char* service, Owned owned) {
    whenConnected([service, owned = std::move(owned), state = state_.get()](GDBusConnection* bus) {
        state->watchedNames.push_back(
            g_bus_watch_name_on_connection(bus, service, G_BUS_NAME_WATCHER_FLAGS_NONE, onOwned,
                                           nullptr, new Owned(owned), dropOwned));
    });
}

void SessionBus::whenConnected(std::function<void(GDBusConnection*)> work) {
    state_->whenKnown([work = std::move(work)](GDBusConnection* bus) {
        if (bus != nullptr) work(bus);
    });
}

void SessionBus::flush(std::chrono::milliseconds atMost) {
    const auto state = state_;
    bool isOver = false;
    const guint timer = g_timeout_add_full(G_PRIORITY_HIGH, static_cast<guint>(atMost.count()),
                                           onTimeOver, &isOver, nullptr);
    state->serve(isOver);
    if (state->bus && *state->bus) {
        g_dbus_connection_flush(state->bus->get(), nullptr, onFinished,
                                counted(state, [](State*, GObject* bus, GAsyncResult* result) {
                                    g_dbus_connection_flush_finish(G_DBUS_CONNECTION(bus), result,
                                                                   nullptr);
                                }));
        state->serve(isOver);
    }
    g_source_remove(timer);
}

} // namespace korvane::runner
