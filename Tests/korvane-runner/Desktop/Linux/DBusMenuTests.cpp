#include "korvane-runner/Desktop/Linux/DBusMenu.h"

#include "PrivateBus.h"
#include "Support/Expect.h"
#include "korvane-runner/Desktop/Linux/GLibLoop.h"
#include "korvane-runner/Desktop/Linux/GVariants.h"

#include <climits>
#include <optional>

using namespace korvane::runner;
using namespace korvane::test;
using namespace std::chrono_literals;

namespace {

constexpr const char* interface = "com.canonical.dbusmenu";
constexpr const char* invalid = "org.freedesktop.DBus.Error.InvalidArgs";

/// A menu and a panel that draws it. What was chosen is told in `chosen`.
struct Drawn {
    PrivateBus privateBus;
    BusPeer panel{privateBus};
    GLibLoop loop;
    SessionBus bus;
    Strings chosen;
    std::optional<DBusMenu> menu;
    std::string program;

    Drawn() : Drawn(std::vector<StatusMenuEntry>()) {}
    explicit Drawn(std::vector<StatusMenuEntry> entries) {
        if (entries.empty()) entries = usual();
        menu.emplace(std::move(entries), bus, loop);
        bus.whenConnected(
            [&](GDBusConnection* it) { program = g_dbus_connection_get_unique_name(it); });
        bus.flush(1h);
    }

    std::vector<StatusMenuEntry> usual() {
        return {{"Snake_Case", {}},
                {},
                {"Show", [this] { chosen.push_back("show"); }},
                {"Quit", [this] { chosen.push_back("quit"); }, 'q'}};
    }

    std::string ask(const char* method, GVariant* arguments) const {
        return panel.ask(program, DBusMenu::path, interface, method, arguments);
    }
    /// The same with arguments as GVariant's text format has them.
    std::string askInWords(const char* method, const char* arguments) const {
        GVariant* const parsed = g_variant_parse(nullptr, arguments, nullptr, nullptr, nullptr);
        REQUIRE(parsed != nullptr);
        const GVariantPtr owner(parsed);
        return ask(method, parsed);
    }

    /// Runs the loop until what was posted before has been called.
    void settle() {
        bool isSettled = false;
        loop.post([&] { isSettled = true; });
        while (!isSettled) g_main_context_iteration(nullptr, TRUE);
    }
};

const std::string heading = "<(1, {'label': <'Snake__Case'>, 'enabled': <false>}, @av [])>";
const std::string separator = "<(2, {'type': <'separator'>}, @av [])>";
const std::string show = "<(3, {'label': <'Show'>}, @av [])>";
const std::string quit = "<(4, {'label': <'Quit'>, 'shortcut': <[['Control', 'q']]>}, @av [])>";
const std::string whole = "(uint32 1, (0, {'children-display': <'submenu'>}, [" + heading + ", " +
                          separator + ", " + show + ", " + quit + "]))";

} // namespace

TEST_CASE("what is chosen again before it was done is done once, and again afterwards") {
    Drawn drawn;
    CHECK(drawn.askInWords("EventGroup", "([(3, 'clicked', <0>, uint32 1), "
                                         "(4, 'clicked', <0>, uint32 1), "
                                         "(3, 'clicked', <0>, uint32 2)],)") == "(@ai [],)");
    drawn.settle();
    CHECK(drawn.chosen == Strings{"show", "quit"});

    CHECK(drawn.askInWords("Event", "(3, 'clicked', <0>, uint32 3)") == "()");
    drawn.settle();
    CHECK(drawn.chosen == Strings{"show", "quit", "show"});
}

TEST_CASE("a panel is told the menu as deep as it asks, from wherever it asks") {
    const Drawn drawn;

    CHECK(drawn.askInWords("GetLayout", "(0, -1, @as [])") == whole);
    CHECK(drawn.askInWords("GetLayout", "(0, 1, @as [])") == whole);
    CHECK(drawn.askInWords("GetLayout", "(0, 2147483647, @as [])") == whole);
    CHECK(drawn.askInWords("GetLayout", "(0, -2147483648, @as [])") == whole);
    CHECK(drawn.askInWords("GetLayout", "(0, 0, @as [])") ==
          "(uint32 1, (0, {'children-display': <'submenu'>}, @av []))");
    CHECK(drawn.askInWords("GetLayout", "(3, -1, @as [])") ==
          "(uint32 1, (3, {'label': <'Show'>}, @av []))");
    for (const char* unknown : {"(5, -1, @as [])", "(-1, -1, @as [])", "(2147483647, 0, ['label'])",
                                "(-2147483648, 0, @as [])"}) {
        CHECK(drawn.askInWords("GetLayout", unknown) == invalid);
    }
}

TEST_CASE("a panel is told the properties that it names, and all when it names none") {
    const Drawn drawn;

    CHECK(drawn.askInWords("GetLayout", "(0, -1, ['label', 'label', 'icon-name', ''])") ==
          "(uint32 1, (0, @a{sv} {}, [<(1, {'label': <'Snake__Case'>}, @av [])>, "
          "<(2, @a{sv} {}, @av [])>, <(3, {'label': <'Show'>}, @av [])>, "
          "<(4, {'label': <'Quit'>}, @av [])>]))");
    CHECK(drawn.askInWords("GetGroupProperties", "([4, 1], ['enabled', 'shortcut'])") ==
          "([(1, {'enabled': <false>}), (4, {'shortcut': <[['Control', 'q']]>})],)");
    CHECK(drawn.askInWords("GetGroupProperties", "(@ai [], @as [])") ==
          "([(0, {'children-display': <'submenu'>}), "
          "(1, {'label': <'Snake__Case'>, 'enabled': <false>}), (2, {'type': <'separator'>}), "
          "(3, {'label': <'Show'>}), "
          "(4, {'label': <'Quit'>, 'shortcut': <[['Control', 'q']]>})],)");
    CHECK(drawn.askInWords("GetGroupProperties", "([7, 3, -1, 3, 3], @as [])") ==
          "([(3, {'label': <'Show'>})],)");
    CHECK(drawn.askInWords("GetGroupProperties", "([7], @as [])") == "(@a(ia{sv}) [],)");
    CHECK(drawn.askInWords("GetProperty", "(3, 'label')") == "(<'Show'>,)");
    CHECK(drawn.askInWords("GetProperty", "(1, 'enabled')") == "(<false>,)");
    CHECK(drawn.askInWords("GetProperty", "(3, 'icon-name')") == invalid);
    CHECK(drawn.askInWords("GetProperty", "(5, 'label')") == invalid);
    CHECK(drawn.askInWords("GetProperty", "(-1, 'label')") == invalid);
}

TEST_CASE("a panel is told which protocol the menu speaks") {
    const Drawn drawn;

    CHECK(drawn.panel.ask(drawn.program, DBusMenu::path, "org.freedesktop.DBus.Properties",
                          "GetAll", g_variant_new("(s)", interface)) ==
          "({'Version': <uint32 3>, 'Status': <'normal'>, 'TextDirection': <'ltr'>, "
          "'IconThemePath': <@as []>},)");
}

TEST_CASE("a menu that never changes needs no update before it is shown") {
    const Drawn drawn;

    CHECK(drawn.askInWords("AboutToShow", "(0,)") == "(false,)");
    CHECK(drawn.askInWords("AboutToShow", "(4,)") == "(false,)");
    CHECK(drawn.askInWords("AboutToShow", "(5,)") == invalid);
    CHECK(drawn.askInWords("AboutToShowGroup", "([0],)") == "(@ai [], @ai [])");
    CHECK(drawn.askInWords("AboutToShowGroup", "(@ai [],)") == "(@ai [], @ai [])");
    CHECK(drawn.askInWords("AboutToShowGroup", "([0, 9, -1, 9],)") == "(@ai [], [-1, 9])");
    CHECK(drawn.askInWords("AboutToShowGroup", "([9],)") == invalid);
}

TEST_CASE("a click chooses an entry, by itself and in a group, and nothing else does") {
    Drawn drawn;
    for (const char* event :
         {"(3, 'hovered', <0>, uint32 1)", "(0, 'opened', <''>, uint32 1)",
          "(0, 'closed', <0>, uint32 1)", "(0, 'clicked', <0>, uint32 1)",
          "(1, 'clicked', <0>, uint32 1)", "(2, 'clicked', <0>, uint32 1)",
          "(3, '', <0>, uint32 1)", "(3, 'x-vendor-Clicked', <@a{sv} {}>, uint32 1)"}) {
        CAPTURE(event);
        CHECK(drawn.askInWords("Event", event) == "()");
    }
    drawn.settle();
    CHECK(drawn.chosen.empty());

    CHECK(drawn.askInWords("Event", "(4, 'clicked', <0>, uint32 4294967295)") == "()");
    CHECK(drawn.askInWords("EventGroup", "([(3, 'hovered', <0>, uint32 1), "
                                         "(3, 'clicked', <'x'>, uint32 1), "
                                         "(9, 'clicked', <0>, uint32 1), "
                                         "(9, 'clicked', <0>, uint32 1)],)") == "([9],)");
    drawn.settle();
    CHECK(drawn.chosen == Strings{"quit", "show"});

    CHECK(drawn.askInWords("Event", "(5, 'clicked', <0>, uint32 1)") == invalid);
    CHECK(drawn.askInWords("Event", "(-4, 'clicked', <0>, uint32 1)") == invalid);
    CHECK(drawn.askInWords("EventGroup", "([(9, 'clicked', <0>, uint32 1)],)") == invalid);
    CHECK(drawn.askInWords("EventGroup", "(@a(isvu) [],)") == "(@ai [],)");
    drawn.settle();
    CHECK(drawn.chosen.size() == 2);
}

TEST_CASE("arguments of other types are refused, and the menu goes on") {
    Drawn drawn;

    CHECK(drawn.askInWords("Event", "('4', 'clicked', <0>, uint32 1)") == invalid);
    CHECK(drawn.askInWords("Event", "(4, 'clicked', 0, uint32 1)") == invalid);
    CHECK(drawn.askInWords("EventGroup", "([(4, 'clicked')],)") == invalid);
    CHECK(drawn.askInWords("GetLayout", "(0, -1)") == invalid);
    CHECK(drawn.askInWords("GetGroupProperties", "(@as [], @as [])") == invalid);
    CHECK(drawn.ask("AboutToShow", nullptr) == invalid);
    CHECK(drawn.askInWords("GetLayout", "(0, -1, @as [])") == whole);
    drawn.settle();
    CHECK(drawn.chosen.empty());
}

TEST_CASE("a flood of numbers and names is answered as one of each would be") {
    const Drawn drawn;
    constexpr int many = 1'000'000;
    GVariantBuilder ids;
    GVariantBuilder names;
    g_variant_builder_init(&ids, G_VARIANT_TYPE("ai"));
    g_variant_builder_init(&names, G_VARIANT_TYPE("as"));
    for (int i = 0; i < many; ++i) {
        g_variant_builder_add(&ids, "i", 3);
        g_variant_builder_add(&names, "s", "label");
    }

    CHECK(drawn.ask("GetGroupProperties", g_variant_new("(aias)", &ids, &names)) ==
          "([(3, {'label': <'Show'>})],)");
}

TEST_CASE("a panel has its answer before what is chosen is called, which may end everything") {
    Drawn drawn({{"End", [&drawn] {
                      drawn.menu.reset();
                      drawn.loop.end(5);
                  }}});
    std::string answer;
    drawn.loop.post([&] {
        answer = drawn.askInWords("EventGroup", "([(1, 'clicked', <0>, uint32 1), "
                                                "(1, 'clicked', <0>, uint32 1)],)");
    });

    CHECK(drawn.loop.run() == 5);

    CHECK(answer == "(@ai [],)");
    CHECK_FALSE(drawn.menu.has_value());
}

TEST_CASE("what was chosen is not called when the menu has gone") {
    Drawn drawn;
    CHECK(drawn.askInWords("GetLayout", "(0, 0, ['label'])") ==
          "(uint32 1, (0, @a{sv} {}, @av []))");
    drawn.menu->chooseFirst();

    drawn.menu.reset();

    drawn.settle();
    CHECK(drawn.chosen.empty());
    CHECK(drawn.askInWords("GetLayout", "(0, 0, ['label'])") ==
          "org.freedesktop.DBus.Error.UnknownMethod");
}

TEST_CASE("the first entry that can be chosen is the one below the heading") {
    Drawn drawn;
    drawn.menu->chooseFirst();
    CHECK(drawn.chosen.empty()); // not at once
    drawn.settle();
    CHECK(drawn.chosen == Strings{"show"});
}

TEST_CASE("a menu of which nothing can be chosen is no error") {
    Drawn drawn({{"Heading", {}}, {}});
    drawn.menu->chooseFirst();
    drawn.settle();
}

TEST_CASE("labels with underlines and with bytes that are no text are shown") {
    const Drawn drawn({{"__a_\xff\xc3\x28_", {}}, {"\xe2\x80\xa8 <b>&amp;", {}}});

    CHECK(drawn.askInWords("GetGroupProperties", "([1, 2], ['label'])") ==
          "([(1, {'label': <'____a__\xef\xbf\xbd\xef\xbf\xbd(__'>}), "
          "(2, {'label': <'\xe2\x80\xa8 <b>&amp;'>})],)");
}
