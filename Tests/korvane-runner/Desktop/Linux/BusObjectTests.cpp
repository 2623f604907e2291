#include "korvane-runner/Desktop/Linux/BusObject.h"

#include "PrivateBus.h"
#include "Support/Expect.h"
#include "korvane-runner/Desktop/Linux/GVariants.h"

using namespace korvane::runner;
using namespace korvane::test;
using namespace std::chrono_literals;

namespace {

constexpr const char* name = "org.example.Number";
constexpr const char* interface = "<node><interface name='org.example.Number'>"
                                  "<property name='Value' type='i' access='read'/>"
                                  "<method name='Halve'><arg type='i' direction='in'/>"
                                  "<arg type='i' direction='out'/></method></interface></node>";

BusObject::Setup number() {
    return {"/number", interface,
            [](std::string_view, GVariant* arguments) -> GVariant* {
                int value = 0;
                g_variant_get(arguments, "(i)", &value);
                return value % 2 == 0 ? g_variant_new("(i)", value / 2) : nullptr;
            },
            [](std::string_view) { return g_variant_new_int32(7); }};
}

/// The name of the connection that programs under test have to the bus.
std::string ownName(SessionBus& bus) {
    std::string result;
    bus.whenConnected([&](GDBusConnection* it) { result = g_dbus_connection_get_unique_name(it); });
    bus.flush(1h);
    return result;
}

constexpr const char* invalid = "org.freedesktop.DBus.Error.InvalidArgs";

} // namespace

TEST_CASE("an object answers methods and properties, and refuses what it does not have") {
    const PrivateBus privateBus;
    const BusPeer peer(privateBus);
    SessionBus bus;
    const BusObject object(bus, number());
    const auto self = ownName(bus);
    const auto ask = [&](const char* method, GVariant* arguments) {
        return peer.ask(self, "/number", name, method, arguments);
    };
    const auto properties = [&](const char* method, GVariant* arguments) {
        return peer.ask(self, "/number", "org.freedesktop.DBus.Properties", method, arguments);
    };

    CHECK(ask("Halve", g_variant_new("(i)", 8)) == "(4,)");
    CHECK(ask("Halve", g_variant_new("(i)", 7)) == invalid);
    CHECK(ask("Halve", g_variant_new("(s)", "8")) == invalid);
    CHECK(ask("Halve", nullptr) == invalid);
    CHECK(ask("Double", g_variant_new("(i)", 8)) == "org.freedesktop.DBus.Error.UnknownMethod");
    CHECK(properties("GetAll", g_variant_new("(s)", name)) == "({'Value': <7>},)");
    CHECK(properties("Get", g_variant_new("(ss)", name, "Value")) == "(<7>,)");
    CHECK(properties("Get", g_variant_new("(ss)", name, "Other")) == invalid);
    CHECK(properties("Set", g_variant_new("(ssv)", name, "Value", g_variant_new_int32(8))) ==
          invalid);
    CHECK(contains(
        peer.ask(self, "/number", "org.freedesktop.DBus.Introspectable", "Introspect", nullptr),
        name));
}

TEST_CASE("an object that has gone is not there, and another one takes its place") {
    const PrivateBus privateBus;
    const BusPeer peer(privateBus);
    SessionBus bus;
    const auto self = ownName(bus);
    const auto halved = [&] {
        return peer.ask(self, "/number", name, "Halve", g_variant_new("(i)", 8));
    };

    {
        const BusObject object(bus, number());
        CHECK(halved() == "(4,)");
    }
    CHECK(halved() == "org.freedesktop.DBus.Error.UnknownMethod");
    const BusObject object(bus, number());
    CHECK(halved() == "(4,)");
}

TEST_CASE("an object may go before the bus is there") {
    const PrivateBus privateBus;
    const BusPeer peer(privateBus);
    SessionBus bus;
    { const BusObject object(bus, number()); }

    CHECK(peer.ask(ownName(bus), "/number", name, "Halve", g_variant_new("(i)", 8)) ==
          "org.freedesktop.DBus.Error.UnknownMethod");
}

TEST_CASE("without a bus an object is no error") {
    const ScopedVariable address("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus");
    SessionBus bus;
    const BusObject object(bus, number());

    CHECK(ownName(bus).empty());
}
