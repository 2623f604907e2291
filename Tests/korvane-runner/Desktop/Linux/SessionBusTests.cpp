#include "korvane-runner/Desktop/Linux/SessionBus.h"

#include "PrivateBus.h"
#include "Support/Expect.h"
#include "korvane-runner/Desktop/Linux/GLibLoop.h"

using namespace korvane::runner;
using namespace korvane::test;
using namespace std::chrono_literals;

namespace {

constexpr const char* service = "org.example.Service";
constexpr SessionBus::Member method{"/org/example", "org.example.Service", "Double"};
constexpr const char* interface = "<node><interface name='org.example.Service'>"
                                  "<method name='Double'><arg type='i' direction='in'/>"
                                  "<arg type='i' direction='out'/></method></interface></node>";

/// A service that doubles numbers.
struct Doubler : BusPeer {
    explicit Doubler(const PrivateBus& bus) : BusPeer(bus) {
        serve("/org/example", interface, [](const std::string&, GVariant* arguments) {
            int number = 0;
            g_variant_get(arguments, "(i)", &number);
            return number == 0 ? nullptr : g_variant_new("(i)", number * 2);
        });
        own(service);
    }
};

/// What a call answers, as text.
std::string said(GVariant* answer) { return answer == nullptr ? "nothing" : printed(answer); }

} // namespace

TEST_CASE("what is called before the bus is there is answered in order") {
    const PrivateBus privateBus;
    const Doubler doubler(privateBus);
    GLibLoop loop;
    SessionBus bus;
    Strings answers;

    for (const int number : {1, 0, 3}) {
        bus.call(service, method, g_variant_new("(i)", number), "(i)", [&](GVariant* answer) {
            answers.push_back(said(answer));
            if (answers.size() == 3) loop.end(0);
        });
    }

    CHECK(answers.empty());
    loop.run();
    CHECK(answers == Strings{"(2,)", "nothing", "(6,)"});
}

TEST_CASE("an answer of another type, and a service that is not there, are no answers") {
    const PrivateBus privateBus;
    const Doubler doubler(privateBus);
    GLibLoop loop;
    SessionBus bus;
    Strings answers;
    const auto tell = [&](GVariant* answer) {
        answers.push_back(said(answer));
        if (answers.size() == 2) loop.end(0);
    };

    bus.call(service, method, g_variant_new("(i)", 1), "(s)", tell);
    bus.call("org.example.Nobody", method, g_variant_new("(i)", 1), "(i)", tell);

    loop.run();
    CHECK(answers == Strings{"nothing", "nothing"});
}

TEST_CASE("without a bus every call is answered with nothing, and signals are no error") {
    const ScopedVariable address("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus");
    GLibLoop loop;
    SessionBus bus;
    Strings answers;
    const auto tell = [&](GVariant* answer) { answers.push_back(said(answer)); };
    bus.emit(method, g_variant_new("(i)", 1));
    bus.whenOwnerChanges(service, [&] { answers.push_back("changed"); });
    bus.call(service, method, g_variant_new("(i)", 1), "(i)", [&](GVariant* answer) {
        tell(answer);
        loop.end(0);
    });

    loop.run();

    bus.call(service, method, g_variant_new("(i)", 1), "(i)", tell);
    bus.emit(method, g_variant_new("(i)", 1));
    bus.flush(1h);
    CHECK(answers == Strings{"nothing", "nothing"});
}

TEST_CASE("a flush sends what was handed over before there was a connection") {
    const PrivateBus privateBus;
    const Doubler doubler(privateBus);
    Strings heard;
    BusPeer listener(privateBus);
    listener.listen("org.example.Service", [&](const std::string& text) { heard.push_back(text); });
    Strings answers;
    {
        SessionBus bus;
        bus.emit(method, g_variant_new("(i)", 7));
        bus.call(service, method, g_variant_new("(i)", 4), "(i)",
                 [&](GVariant* answer) { answers.push_back(said(answer)); });

        bus.flush(1h);

        CHECK(answers == Strings{"(8,)"});
    }
    while (heard.empty()) g_main_context_iteration(nullptr, TRUE);
    CHECK(heard == Strings{"/org/example Double (7,)"});
}

TEST_CASE("a flush waits for a service that does not answer no longer than it is told") {
    const PrivateBus privateBus;
    BusPeer silent(privateBus);
    silent.own(service);
    SessionBus bus;
    bool isAnswered = false;
    GMainContext* const other = g_main_context_new(); // which nobody runs
    g_main_context_push_thread_default(other);
    silent.serve("/org/example", interface,
                 [](const std::string&, GVariant*) { return g_variant_new("(i)", 1); });
    g_main_context_pop_thread_default(other);
    bus.call(service, method, g_variant_new("(i)", 4), "(i)",
             [&](GVariant*) { isAnswered = true; });

    bus.flush(20ms);

    CHECK_FALSE(isAnswered);
    g_main_context_unref(other);
}

TEST_CASE("what is outstanding when the bus goes is told nobody") {
    const PrivateBus privateBus;
    const Doubler doubler(privateBus);
    GLibLoop loop;
    SessionBus outlasting;
    bool isAnswered = false;
    {
        SessionBus bus;
        bus.call(service, method, g_variant_new("(i)", 4), "(i)",
                 [&](GVariant*) { isAnswered = true; });
    }
    outlasting.call(service, method, g_variant_new("(i)", 4), "(i)",
                    [&](GVariant*) { loop.end(0); });

    loop.run();

    CHECK_FALSE(isAnswered);
}

TEST_CASE("a bus that ends does not end the program, and calls are answered with nothing") {
    PrivateBus privateBus;
    const Doubler doubler(privateBus);
    GLibLoop loop;
    SessionBus bus;
    Strings answers;
    const auto call = [&](const SessionBus::Answered& then) {
        bus.call(service, method, g_variant_new("(i)", 4), "(i)",
                 [&answers, then](GVariant* answer) {
                     answers.push_back(said(answer));
                     then(answer);
                 });
    };
    call([&](GVariant*) {
        privateBus.end();
        call([&](GVariant*) { loop.end(0); });
    });

    CHECK(loop.run() == 0);

    CHECK(answers == Strings{"(8,)", "nothing"});
}

TEST_CASE("a service that comes, goes or is taken over is told") {
    const PrivateBus privateBus;
    GLibLoop loop;
    SessionBus bus;
    int changes = 0;
    bus.whenOwnerChanges(service, [&] { ++changes; });
    bus.whenOwnerChanges("org.example.Other", [&] { FAIL("of another service"); });
    bus.flush(1h);
    const auto awaitChange = [&](int number) {
        while (changes < number) g_main_context_iteration(nullptr, TRUE);
        CHECK(changes == number);
    };
    {
        BusPeer first(privateBus);
        first.own(service);
        awaitChange(1);
        first.release(service);
        awaitChange(2);
        first.own(service);
        awaitChange(3);
    }
    awaitChange(4);
}

TEST_CASE("whoever owns a name, now or later, is told once by the connection's own name") {
    const PrivateBus privateBus;
    GLibLoop loop;
    const auto first = std::make_unique<Doubler>(privateBus);
    Strings owners;
    SessionBus bus;
    bus.whenOwned(service, [&](const char* owner) { owners.emplace_back(owner); });
    bus.whenOwned("org.example.Other", [&](const char*) { FAIL("of another service"); });
    const auto awaitOwner = [&](std::size_t number) {
        while (owners.size() < number) g_main_context_iteration(nullptr, TRUE);
        bus.flush(1h);
        CHECK(owners.size() == number);
    };

    awaitOwner(1);
    first->release(service);
    bus.flush(1h);
    CHECK(owners.size() == 1);
    const BusPeer second(privateBus);
    second.own(service);

    awaitOwner(2);
    CHECK(owners[0].front() == ':');
    CHECK(owners[1] != owners[0]);
}

TEST_CASE("a call that nobody waits for arrives, and asks for no answer") {
    const PrivateBus privateBus;
    Strings heard;
    BusPeer peer(privateBus);
    peer.own(service);
    peer.serve("/org/example", interface, [&](const std::string& name, GVariant* arguments) {
        heard.push_back(name + " " + printed(arguments));
        return g_variant_new("(i)", 0);
    });
    SessionBus bus;
    bus.call(service, method, g_variant_new("(i)", 4), "(i)", nullptr);

    bus.flush(1h);

    while (heard.empty()) g_main_context_iteration(nullptr, TRUE);
    CHECK(heard == Strings{"Double (4,)"});
    CHECK(peer.callsWithoutAnswer() == 1);
    bus.call(service, method, g_variant_new("(i)", 5), "(i)", [](GVariant*) {});
    bus.flush(1h);
    CHECK(heard == Strings{"Double (4,)", "Double (5,)"});
    CHECK(peer.callsWithoutAnswer() == 1);
}

TEST_CASE("where there is no bus none is started") {
    const TempDir tmp;
    writeScript(tmp / "dbus-launch", "touch \"" + (tmp / "started") + "\"");
    const ScopedVariable path("PATH", tmp.path() + ":" + std::getenv("PATH"));
    const ScopedVariable display("DISPLAY", ":korvane-test");
    const ScopedVariable runtime("XDG_RUNTIME_DIR", tmp / "gone");
    const ScopedVariable address("DBUS_SESSION_BUS_ADDRESS", std::nullopt);
    Strings answers;
    SessionBus bus;

    bus.whenConnected([&](GDBusConnection*) { answers.push_back("connected"); });
    bus.whenOwned(service, [&](const char*) { answers.push_back("owned"); });
    bus.call(service, method, g_variant_new("(i)", 1), "(i)", nullptr);
    bus.call(service, method, g_variant_new("(i)", 1), "(i)",
             [&](GVariant* answer) { answers.push_back(said(answer)); });
    bus.flush(1h);

    CHECK(answers == Strings{"nothing"});
    CHECK_FALSE(isThere(tmp / "started"));
}
