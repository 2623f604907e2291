#include "PrivateBus.h"

#include <doctest/doctest.h>

namespace korvane::test {

namespace {

struct Asked {
    GVariant* answer = nullptr;
    GError* error = nullptr;
    bool isOver = false;

    static void finish(GObject* bus, GAsyncResult* result, gpointer self) {
        auto& asked = *static_cast<Asked*>(self);
        asked.answer = g_dbus_connection_call_finish(G_DBUS_CONNECTION(bus), result, &asked.error);
        asked.isOver = true;
    }
};

std::string takenName(GError* error) {
    char* name = g_dbus_error_get_remote_error(error);
    const std::string result = name != nullptr ? name : error->message;
    g_free(name);
    g_error_free(error);
    return result;
}

using Heard = std::function<void(const std::string&)>;

} // namespace

// GIO has one connection to the session's bus, for as long as any reference to it is left: the next
// test would get it. What is left is dropped in the default context.
PrivateBus::~PrivateBus() {
    const ScopedVariable nowhere("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus");
    while (auto* connection = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr)) {
        g_object_unref(connection);
        g_main_context_iteration(nullptr, FALSE);
    }
}

BusPeer::BusPeer(const PrivateBus& bus)
    : connection_(g_dbus_connection_new_for_address_sync(
          bus.address().c_str(),
          static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                            G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
          nullptr, nullptr, nullptr)) {
    REQUIRE(connection_ != nullptr);
}

BusPeer::~BusPeer() {
    g_dbus_connection_close_sync(connection_, nullptr, nullptr);
    g_object_unref(connection_);
}

void BusPeer::callBus(const char* method, GVariant* arguments) const {
    GVariant* answer = g_dbus_connection_call_sync(
        connection_, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
        method, arguments, nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr);
    REQUIRE(answer != nullptr);
    g_variant_unref(answer);
}

void BusPeer::own(const std::string& name) const {
    callBus("RequestName", g_variant_new("(su)", name.c_str(), 0U));
}

void BusPeer::release(const std::string& name) const {
    callBus("ReleaseName", g_variant_new("(s)", name.c_str()));
}

void BusPeer::listen(const char* interface, Heard heard) const {
    const auto onSignal = [](GDBusConnection*, const char*, const char* path, const char*,
                             const char* name, GVariant* arguments, gpointer function) {
        (*static_cast<Heard*>(function))(std::string(path) + " " + name + " " + printed(arguments));
    };
    g_dbus_connection_signal_subscribe(
        connection_, nullptr, interface, nullptr, nullptr, nullptr, G_DBUS_SIGNAL_FLAGS_NONE,
        onSignal, new Heard(std::move(heard)),
        [](gpointer function) { delete static_cast<Heard*>(function); });
    // The bus has the rule when it has answered something that was asked after it.
    callBus("GetId", nullptr);
}

void BusPeer::onMethod(GDBusConnection*, const char*, const char*, const char*, const char* method,
                       GVariant* arguments, GDBusMethodInvocation* call, gpointer self) {
    auto& peer = *static_cast<BusPeer*>(self);
    const auto flags = g_dbus_message_get_flags(g_dbus_method_invocation_get_message(call));
    if ((flags & G_DBUS_MESSAGE_FLAGS_NO_REPLY_EXPECTED) != 0) ++peer.callsWithoutAnswer_;
    GVariant* result = (*peer.answer_)(method, arguments);
    if (result != nullptr) {
        g_dbus_method_invocation_return_value(call, result);
    } else {
        g_dbus_method_invocation_return_dbus_error(call, "org.example.Error", "no");
    }
}

void BusPeer::serve(const char* path, const char* interfaceXml, Answer answer) {
    answer_ = std::make_unique<Answer>(std::move(answer));
    GDBusNodeInfo* node = g_dbus_node_info_new_for_xml(interfaceXml, nullptr);
    REQUIRE(node != nullptr);
    static const GDBusInterfaceVTable table{onMethod, nullptr, nullptr, {}};
    REQUIRE(g_dbus_connection_register_object(connection_, path, node->interfaces[0], &table, this,
                                              nullptr, nullptr) != 0);
    g_dbus_node_info_unref(node);
}

std::string BusPeer::ask(const std::string& program, const char* path, const char* interface,
                         const char* method, GVariant* arguments) const {
    Asked asked;
    g_dbus_connection_call(connection_, program.c_str(), path, interface, method, arguments,
                           nullptr, G_DBUS_CALL_FLAGS_NONE, -1, nullptr, Asked::finish, &asked);
    while (!asked.isOver) g_main_context_iteration(nullptr, TRUE);
    if (asked.answer == nullptr) return takenName(asked.error);
    auto result = printed(asked.answer);
    g_variant_unref(asked.answer);
    return result;
}

std::string printed(GVariant* value) {
    char* text = g_variant_print(value, TRUE);
    std::string result = text;
    g_free(text);
    return result;
}

} // namespace korvane::test
