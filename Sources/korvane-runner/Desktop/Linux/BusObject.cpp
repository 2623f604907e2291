#include "korvane-runner/Desktop/Linux/BusObject.h"

#include "korvane-runner/Desktop/Linux/GObjects.h"

#include <string>
#include <utility>

namespace korvane::runner {

/// GIO drops its hold some time after the object's end.
struct BusObject::State {
    using Held = std::shared_ptr<State>;

    Setup setup;
    GObjectPtr<GDBusConnection> bus{};
    guint registration = 0;

    static const Setup& setupOf(gpointer held) { return (*static_cast<Held*>(held))->setup; }

    static void onMethod(GDBusConnection*, const char*, const char*, const char*, const char* name,
                         GVariant* arguments, GDBusMethodInvocation* call, gpointer held) noexcept {
        GVariant* answer = setupOf(held).method(name, arguments);
        if (answer != nullptr) return g_dbus_method_invocation_return_value(call, answer);
        g_dbus_method_invocation_return_error_literal(call, G_DBUS_ERROR, G_DBUS_ERROR_INVALID_ARGS,
                                                      "what is asked for is not there");
    }

    static GVariant* onProperty(GDBusConnection*, const char*, const char*, const char*,
                                const char* name, GError**, gpointer held) noexcept {
        return setupOf(held).property(name);
    }

    static void drop(gpointer held) noexcept { delete static_cast<Held*>(held); }

    static void serve(const Held& state, GDBusConnection* bus) {
        static constexpr GDBusInterfaceVTable table{onMethod, onProperty, nullptr, {}};
        GDBusNodeInfo* node =
            g_dbus_node_info_new_for_xml(std::string(state->setup.interface).c_str(), nullptr);
        state->bus = retained(bus);
        state->registration = g_dbus_connection_register_object(
            bus, state->setup.path, node->interfaces[0], &table, new Held(state), drop, nullptr);
        g_dbus_node_info_unref(node);
    }
};

BusObject::BusObject(SessionBus& bus, Setup setup) : state_(new State{std::move(setup)}) {
    bus.whenConnected([weak = std::weak_ptr(state_)](GDBusConnection* connection) {
        if (const auto state = weak.lock()) State::serve(state, connection);
    });
}

BusObject::~BusObject() {
    if (state_->registration == 0) return;
    g_dbus_connection_unregister_object(state_->bus.get(), state_->registration);
}

} // namespace korvane::runner
