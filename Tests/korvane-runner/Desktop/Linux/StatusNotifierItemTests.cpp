#include "korvane-runner/Desktop/Linux/StatusNotifierArea.h"

#include "PrivateBus.h"
#include "Support/Expect.h"
#include "korvane-runner/Desktop/Linux/GLibLoop.h"

#include <unistd.h>

using namespace korvane::runner;
using namespace korvane::test;
using namespace std::chrono_literals;

namespace {

constexpr const char* watcherName = "org.kde.StatusNotifierWatcher";
constexpr const char* interface = "org.kde.StatusNotifierItem";
constexpr const char* properties = "org.freedesktop.DBus.Properties";
const std::string path = "/StatusNotifierItem";

std::string itemName() { return "org.kde.StatusNotifierItem-" + std::to_string(::getpid()) + "-1"; }

/// The program that watches over items, and draws them.
struct Watcher : BusPeer {
    Strings registered;

    explicit Watcher(const PrivateBus& bus) : BusPeer(bus) {
        serve("/StatusNotifierWatcher",
              "<node><interface name='org.kde.StatusNotifierWatcher'><method "
              "name='RegisterStatusNotifierItem'><arg type='s' direction='in'/></method>"
              "</interface></node>",
              [this](const std::string&, GVariant* arguments) {
                  const char* item = nullptr;
                  g_variant_get(arguments, "(&s)", &item);
                  registered.emplace_back(item);
                  return g_variant_new("()");
              });
        own(watcherName);
    }

    void awaitItems(std::size_t number) const {
        while (registered.size() < number) g_main_context_iteration(nullptr, TRUE);
    }
    std::string all(const std::string& item) const {
        return ask(item, path.c_str(), properties, "GetAll", g_variant_new("(s)", interface));
    }
};

/// What a program with an item has of a desktop.
struct Program {
    GLibLoop loop;
    SessionBus bus;
    StatusNotifierArea area{bus, loop};
    Strings chosen;
    int imagesAsked = 0;

    StatusItemSetup setup() {
        return {"org.example.a",
                "A & <b>B</b>",
                [this] {
                    ++imagesAsked;
                    return StatusImage{{{1, 1, {1, 2, 3, 4}}}, false};
                },
                {{"Heading", {}},
                 {},
                 {"Show", [this] { chosen.push_back("show"); }},
                 {"Quit", [this] { chosen.push_back("quit"); }, 'q'}}};
    }

    void settle() {
        bus.flush(1h);
        bool isSettled = false;
        loop.post([&] { isSettled = true; });
        while (!isSettled) g_main_context_iteration(nullptr, TRUE);
    }
};

constexpr const char* allProperties =
    "({'Category': <'ApplicationStatus'>, 'Id': <'org.example.a'>, 'Title': <'A & <b>B</b>'>, "
    "'Status': <'Active'>, 'WindowId': <0>, 'IconName': <''>, 'IconThemePath': <''>, "
    "'IconPixmap': <[(1, 1, [byte 0x04, 0x01, 0x02, 0x03])]>, "
    "'ToolTip': <('', @a(iiay) [], 'A & <b>B</b>', '')>, 'ItemIsMenu': <true>, "
    "'Menu': <objectpath '/MenuBar'>},)";

} // namespace

TEST_CASE("an item registers with the panel that there is, and tells all of itself when asked") {
    const PrivateBus privateBus;
    const Watcher watcher(privateBus);
    Program program;
    const auto item = program.area.show(program.setup());

    watcher.awaitItems(1);
    CHECK(watcher.registered == Strings{itemName()});
    CHECK(watcher.callsWithoutAnswer() == 0); // the end waits until the panel knows of it
    CHECK(program.imagesAsked == 0);
    CHECK(watcher.all(itemName()) == allProperties);
    CHECK(watcher.all(itemName()) == allProperties);
    CHECK(program.imagesAsked == 1);
    CHECK(watcher.ask(itemName(), path.c_str(), properties, "Get",
                      g_variant_new("(ss)", interface, "Id")) == "(<'org.example.a'>,)");
    CHECK(watcher.ask(itemName(), "/MenuBar", "com.canonical.dbusmenu", "AboutToShow",
                      g_variant_new("(i)", 0)) == "(false,)");
}

TEST_CASE("an item comes to a panel that starts later, and again to each that takes its place") {
    const PrivateBus privateBus;
    Program program;
    const auto item = program.area.show(program.setup());
    program.settle();
    for (int i = 0; i < 3; ++i) {
        const Watcher watcher(privateBus);
        watcher.awaitItems(1);
        program.settle();
        CHECK(watcher.registered == Strings{itemName()});
        CHECK(watcher.all(itemName()) == allProperties);
    }
    CHECK(program.imagesAsked == 1);
}

TEST_CASE("a template's picture is found below the folder that the item names") {
    const TempDir tmp;
    const ScopedVariable session("XDG_RUNTIME_DIR", makeFolder(tmp / "run"));
    const PrivateBus privateBus;
    const Watcher watcher(privateBus);
    Program program;
    auto setup = program.setup();
    setup.image = [] {
        return StatusImage{{{22, 22, std::vector<std::uint8_t>(22 * 22 * 4, 9)}}, true};
    };
    auto item = program.area.show(std::move(setup));
    watcher.awaitItems(1);
    CHECK(namesIn(tmp / "run").empty());

    const auto told = watcher.all(itemName());

    const auto folder = tmp / "run/" + namesIn(tmp / "run").at(0);
    CHECK(contains(told, "'IconName': <'org.example.a-symbolic'>, 'IconThemePath': <'" + folder +
                             "'>, 'IconPixmap': <[(22, 22, [byte 0x09, 0x80, 0x80, 0x80, "));
    CHECK(isThere(folder + "/hicolor/22x22/apps/org.example.a-symbolic.symbolic.png"));
    item.reset();
    CHECK(namesIn(tmp / "run").empty());
}

TEST_CASE("a panel that calls the item instead of showing its menu gets the first entry") {
    const PrivateBus privateBus;
    const Watcher watcher(privateBus);
    Program program;
    const auto item = program.area.show(program.setup());
    watcher.awaitItems(1);
    const auto ask = [&](const char* method, GVariant* arguments) {
        return watcher.ask(itemName(), path.c_str(), interface, method, arguments);
    };

    CHECK(ask("ContextMenu", g_variant_new("(ii)", 5, -5)) == "()");
    CHECK(ask("SecondaryActivate", g_variant_new("(ii)", 5, 5)) == "()");
    CHECK(ask("Scroll", g_variant_new("(is)", -120, "vertical")) == "()");
    program.settle();
    CHECK(program.chosen.empty());

    CHECK(ask("Activate", g_variant_new("(ii)", 5, 5)) == "()");
    CHECK(ask("Activate", g_variant_new("(s)", "5")) == "org.freedesktop.DBus.Error.InvalidArgs");
    CHECK(ask("ProvideXdgActivationToken", g_variant_new("(s)", "token")) ==
          "org.freedesktop.DBus.Error.UnknownMethod");
    program.settle();
    CHECK(program.chosen == Strings{"show"});
}

TEST_CASE("an item that has gone leaves the panel, and another one may come") {
    const PrivateBus privateBus;
    const Watcher watcher(privateBus);
    int changes = 0;
    Program program;
    auto item = program.area.show(program.setup());
    watcher.awaitItems(1);
    const auto name = itemName();
    program.bus.whenOwnerChanges(name.c_str(), [&] { ++changes; });
    program.bus.flush(1h);

    item.reset();

    while (changes == 0) g_main_context_iteration(nullptr, TRUE);
    CHECK(watcher.registered.size() == 1);
    item = program.area.show(program.setup());
    watcher.awaitItems(2);
    CHECK(watcher.registered[1] == itemName());
    CHECK(watcher.all(itemName()) == allProperties);
    item.reset();
    program.settle();
    const Watcher next(privateBus);
    program.settle();
    CHECK(next.registered.empty());
}

TEST_CASE("where another program has the item's name the item goes by that of its connection") {
    const PrivateBus privateBus;
    const Watcher watcher(privateBus);
    watcher.own(itemName());
    Program program;
    auto item = program.area.show(program.setup());

    watcher.awaitItems(1);
    CHECK(watcher.registered == Strings{path});
    item.reset();
    program.settle();
}

TEST_CASE("an entry that takes its item away, or ends the loop, does so after the answer") {
    const PrivateBus privateBus;
    const Watcher watcher(privateBus);
    Program program;
    std::unique_ptr<StatusItem> item;
    auto setup = program.setup();
    setup.menu = {{"End", [&] {
                       item.reset();
                       program.loop.end(3);
                   }}};
    item = program.area.show(std::move(setup));
    watcher.awaitItems(1);
    std::string answer;
    program.loop.post([&] {
        answer = watcher.ask(itemName(), path.c_str(), interface, "Activate",
                             g_variant_new("(ii)", 0, 0));
    });

    CHECK(program.loop.run() == 3);

    CHECK(answer == "()");
    CHECK(item == nullptr);
}

TEST_CASE("an item without a bus, or with one that ends, is no matter for the program") {
    {
        const ScopedVariable address("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus");
        Program program;
        const auto item = program.area.show(program.setup());
        program.settle();
        CHECK(program.imagesAsked == 0);
    }
    PrivateBus privateBus;
    Program program;
    auto item = program.area.show(program.setup());
    {
        const Watcher watcher(privateBus);
        watcher.awaitItems(1);
        privateBus.end();
    }
    program.settle();
    item.reset();
    program.loop.post([&] { program.loop.end(4); });
    CHECK(program.loop.run() == 4);
}

TEST_CASE("an item may go before the bus is there") {
    const PrivateBus privateBus;
    const Watcher watcher(privateBus);
    Program program;
    { const auto item = program.area.show(program.setup()); }

    program.settle();

    CHECK(watcher.registered.empty());
}
