#include "ServiceCalls.h"

#include <csignal>

namespace korvane::test {

using namespace korvane::runner::bus;

namespace {

int exitedWith(int status) { return status << 8; }

/// The serial of a call that waits, from `serial` on, of a service that is asked to end whenever a
/// call has waited too long. On a machine that is busy that may come before anything else is done,
/// and the next call is made then.
std::uint32_t callThatWaits(ProxyWorld& world, RawClient& client, std::uint32_t serial) {
    while (true) {
        const auto asked = world.services().asked.size();
        client.send(callToService(serial).bytes());
        CHECK(client.ask(busCall("GetId")).header.type == MessageType::methodReturn);
        if (world.services().asked.size() == asked) return serial;
        ++serial;
    }
}

} // namespace

TEST_CASE("a call to start a service is answered when it is there") {
    ProxyWorld world({.services = {service}});
    RawClient client(world);
    RawClient started(world);
    client.join();

    client.send(
        busCall("StartServiceByName").withBody("su", Bytes().text(service).number(0)).bytes());
    world.waitUntil([&] { return !world.services().started.empty(); });
    CHECK(started.join().requestName(service) == 1);

    constexpr std::uint32_t isStarted = 1;
    const auto answer = client.receiveAnswer();
    CHECK(answer.number() == isStarted);
    CHECK(answer.header.sender == "org.freedesktop.DBus");
    constexpr std::uint32_t runsAlready = 2;
    CHECK(client.ask(busCall("StartServiceByName").withBody("su", Bytes().text(service).number(0)))
              .number() == runsAlready);
}

TEST_CASE("what waits for a service that does not come is answered as by the bus") {
    struct Row {
        std::optional<std::string> reason;
        int status;
        std::string error;
        std::string text;
    };
    const std::vector<Row> rows{
        {"Permission denied", 0, "Spawn.ExecFailed",
         "Failed to execute program org.example.Service: Permission denied"},
        {{},
         exitedWith(3),
         "Spawn.ChildExited",
         "Process org.example.Service exited with status 3"},
        {{}, SIGSEGV, "Spawn.ChildSignaled", "Process org.example.Service received signal 11"},
    };
    for (const auto& row : rows) {
        for (const char order : {'l', 'B'}) {
            CAPTURE(row.error);
            ProxyWorld world({.services = {service}});
            RawClient client(world);
            world.services().reason = row.reason;
            client.join();

            auto call = callTo(service, order);
            client.send(call.bytes());
            world.waitUntil([&] { return !world.services().started.empty(); });
            world.proxy().serviceEnded(service, row.status);

            const auto answer = client.receive();
            CHECK(answer.header.type == MessageType::error);
            CHECK(answer.header.errorName == "org.freedesktop.DBus.Error." + row.error);
            CHECK(answer.header.replySerial == 7);
            CHECK(answer.text() == row.text);
            // The next one starts it once more.
            client.send(call.bytes());
            world.waitUntil([&] { return world.services().started.size() == 2; });
        }
    }
}

TEST_CASE("what waits for a service that has ended well waits on, until the time is over") {
    ProxyWorld world({.services = {service}, .limits = {.time = std::chrono::milliseconds(50)}});
    RawClient client(world);
    client.join().send(callToService(10).bytes());
    world.waitUntil([&] { return !world.services().started.empty(); });

    world.proxy().serviceEnded(service, exitedWith(0));

    const auto answer = client.receive();
    CHECK(answer.header.errorName == "org.freedesktop.DBus.Error.TimedOut");
    CHECK(answer.text() == "Failed to activate service 'org.example.Service': timed out "
                           "(service_start_timeout=50ms)");
}

TEST_CASE("a service that hangs at its start is asked to end, and another started after its end") {
    ProxyWorld world({.services = {service}, .limits = {.time = std::chrono::milliseconds(50)}});
    world.services().isThere = true;
    RawClient client(world);
    client.join().send(callToService(10).bytes());
    const auto timedOut = "org.freedesktop.DBus.Error.TimedOut";
    CHECK(client.receive().header.errorName == timedOut);
    CHECK(world.services().asked == std::vector<std::string>{service});

    client.send(callToService(11).bytes());
    const auto answer = client.receive();
    CHECK(answer.header.errorName == timedOut); // it heeds nobody
    CHECK(answer.header.replySerial == 11);
    CHECK(world.services().started.size() == 1);
    CHECK(world.services().asked.size() == 2);

    const auto waiting = callThatWaits(world, client, 12);
    CHECK(world.services().started.size() == 1);
    world.proxy().serviceEnded(service, SIGTERM);
    CHECK(world.services().started.size() == 2);
    world.proxy().serviceEnded(service, exitedWith(3));
    CHECK(client.receiveAnswer(waiting).header.errorName ==
          "org.freedesktop.DBus.Error.Spawn.ChildExited");
}

TEST_CASE("services get what programs have put into their environment") {
    ProxyWorld world({.services = {service}});
    RawClient client(world);
    client.join();
    Bytes variables;
    variables.array(Bytes().text("EDITOR").text("vi").str(), 8);

    client.ask(busCall("UpdateActivationEnvironment").withBody("a{ss}", variables));
    client.send(callToService(10).bytes());
    world.waitUntil([&] { return !world.services().started.empty(); });

    CHECK(world.services().additions == ServiceVariables{{"EDITOR", "vi"}});
}

TEST_CASE("a service that is installed later is found by programs that come then") {
    ProxyWorld world;
    RawClient before(world);
    before.join();
    CHECK(before.ask(callToService(7)).header.errorName ==
          "org.freedesktop.DBus.Error.ServiceUnknown");

    world.addService(service);
    RawClient after(world);
    after.join().send(callToService(10).bytes());

    world.waitUntil([&] { return !world.services().started.empty(); });
    CHECK(world.services().started == std::vector<std::string>{service});
}

} // namespace korvane::test
