#include "korvane-runner/Desktop/Linux/NotificationBanners.h"

#include "PrivateBus.h"
#include "Support/Expect.h"
#include "korvane-runner/Desktop/Linux/GLibLoop.h"

#include <optional>

using namespace korvane::runner;
using namespace korvane::test;
using namespace std::chrono_literals;

namespace {

constexpr const char* service = "org.freedesktop.Notifications";
constexpr const char* interface =
    "<node><interface name='org.freedesktop.Notifications'>"
    "<method name='GetCapabilities'><arg type='as' direction='out'/></method>"
    "<method name='Notify'><arg type='s' direction='in'/><arg type='u' direction='in'/>"
    "<arg type='s' direction='in'/><arg type='s' direction='in'/><arg type='s' direction='in'/>"
    "<arg type='as' direction='in'/><arg type='a{sv}' direction='in'/>"
    "<arg type='i' direction='in'/><arg type='u' direction='out'/></method>"
    "</interface></node>";

/// A server whose abilities a test chooses. It refuses banners that are called "refused".
struct Server : BusPeer {
    Server(const PrivateBus& bus, Strings theAbilities)
        : BusPeer(bus), abilities(std::move(theAbilities)) {
        serve("/org/freedesktop/Notifications", interface,
              [this](const std::string& method, GVariant* arguments) {
                  return method == "Notify" ? notify(arguments) : capabilities();
              });
        own(service);
    }

    GVariant* capabilities() {
        ++questions;
        GVariantBuilder list;
        g_variant_builder_init(&list, G_VARIANT_TYPE("as"));
        for (const auto& ability : abilities) {
            g_variant_builder_add(&list, "s", ability.c_str());
        }
        return g_variant_new("(as)", &list);
    }

    GVariant* notify(GVariant* arguments) {
        shown.push_back(printed(arguments));
        const char* title = nullptr;
        const char* body = nullptr;
        g_variant_get_child(arguments, 3, "&s", &title);
        g_variant_get_child(arguments, 4, "&s", &body);
        titles.emplace_back(title);
        bodies.emplace_back(body);
        return titles.back() == "refused" ? nullptr : g_variant_new("(u)", 1U);
    }

    Strings abilities;
    int questions = 0;
    Strings shown;
    Strings titles;
    Strings bodies;
};

/// An instance with banners to post.
struct Scene {
    GLibLoop loop;
    SessionBus bus;
    DesktopIdentity identity{"org.example.a", "Work Mail", "/home/a b/icon.png"};
    std::optional<NotificationBanners> banners;
    int done = 0;

    void post(const Banner& banner) {
        if (!banners) banners.emplace(identity, bus, loop);
        banners->post(banner, [this] { ++done; });
    }
    /// Until as many banners are done as that.
    void awaitDone(int number) const {
        while (done < number) g_main_context_iteration(nullptr, TRUE);
        CHECK(done == number);
    }
};

const Banner looksLikeMarkup{"<b>1 & 2</b>", "<b>bold</b> & \"so\" &amp; <img src=x>"};
const std::string escapedBody =
    "&lt;b&gt;bold&lt;/b&gt; &amp; &quot;so&quot; &amp;amp; &lt;img src=x&gt;";

} // namespace

TEST_CASE("a banner has the instance's name, icon and desktop entry, and the default sound") {
    const PrivateBus privateBus;
    Server server(privateBus, {"body"});
    Scene scene;
    std::string icon = "'/home/a b/icon.png'";
    SUBCASE("with an icon") {}
    SUBCASE("without one the desktop's for the entry") {
        scene.identity.icon.clear();
        icon = "'org.example.a'";
    }

    scene.post({"Title", "Body\nline \xc3\xa4"});

    CHECK(scene.done == 0);
    scene.awaitDone(1);
    CHECK(server.shown ==
          Strings{"('Work Mail', uint32 0, " + icon +
                  ", 'Title', 'Body\\nline \xc3\xa4', @as [], {'desktop-entry': "
                  "<'org.example.a'>, 'sound-name': <'message-new-instant'>}, -1)"});
}

TEST_CASE("text that looks like markup is escaped in the body alone, where the server reads it") {
    const PrivateBus privateBus;
    Scene scene;
    SUBCASE("a server that reads markup") {
        Server server(privateBus, {"body", "body-markup", "actions"});
        scene.post(looksLikeMarkup);
        scene.awaitDone(1);
        CHECK(server.titles == Strings{looksLikeMarkup.title});
        CHECK(server.bodies == Strings{escapedBody});
    }
    SUBCASE("a server that does not") {
        Server server(privateBus, {"body", "body-hyperlinks"});
        scene.post(looksLikeMarkup);
        scene.awaitDone(1);
        CHECK(server.titles == Strings{looksLikeMarkup.title});
        CHECK(server.bodies == Strings{looksLikeMarkup.body});
    }
}

TEST_CASE("a server is asked once what it can do, and banners keep their order") {
    const PrivateBus privateBus;
    Server server(privateBus, {"body"});
    Scene scene;

    for (const char* title : {"1", "2", "3"}) scene.post({title, ""});
    scene.awaitDone(3);
    for (const char* title : {"4", "5"}) scene.post({title, ""});
    scene.awaitDone(5);

    CHECK(server.questions == 1);
    CHECK(server.titles == Strings{"1", "2", "3", "4", "5"});
}

TEST_CASE("another server is asked anew what it can do") {
    const PrivateBus privateBus;
    Scene scene;
    {
        Server plain(privateBus, {"body"});
        scene.post(looksLikeMarkup);
        scene.awaitDone(1);
        CHECK(plain.bodies == Strings{looksLikeMarkup.body});
    }
    bool hasNext = false;
    scene.bus.whenOwnerChanges(service, [&] { hasNext = true; });
    scene.bus.flush(1h);
    Server markup(privateBus, {"body-markup"});
    while (!hasNext) g_main_context_iteration(nullptr, TRUE);

    scene.post(looksLikeMarkup);
    scene.awaitDone(2);

    CHECK(markup.bodies == Strings{escapedBody});
}

TEST_CASE("a banner that the server refuses is done, and the next one is shown") {
    const PrivateBus privateBus;
    Server server(privateBus, {});
    Scene scene;

    scene.post({"refused", ""});
    scene.post({"shown", ""});
    scene.awaitDone(2);

    CHECK(server.titles == Strings{"refused", "shown"});
}

TEST_CASE(
    "where nobody shows notifications a banner is done, and a server that comes gets the next") {
    const PrivateBus privateBus;
    Scene scene;
    scene.post({"lost", ""});
    CHECK(scene.done == 0);
    scene.awaitDone(1);
    Server server(privateBus, {});

    scene.post({"shown", ""});
    scene.awaitDone(2);

    CHECK(server.titles == Strings{"shown"});
}

TEST_CASE("without a bus a banner is done later, not at once") {
    const ScopedVariable address("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent/bus");
    Scene scene;
    for (const int number : {1, 2}) {
        scene.post({"lost", ""});
        CHECK(scene.done == number - 1);
        scene.awaitDone(number);
    }
}

TEST_CASE("a flush hands over banners that wait for what the server can do") {
    const PrivateBus privateBus;
    Server server(privateBus, {"body"});
    Scene scene;
    scene.loop.end(0); // nothing is told any more

    scene.post({"last", ""});
    scene.bus.flush(1h);

    CHECK(server.titles == Strings{"last"});
}

TEST_CASE("text that is no UTF-8 costs no more than the characters that are none") {
    const PrivateBus privateBus;
    Server server(privateBus, {"body"});
    Scene scene;
    scene.identity.icon = "/home/\xff/icon.png";

    scene.post({"a\xff", "b\xc3"});
    scene.awaitDone(1);

    CHECK(server.titles == Strings{"a\xef\xbf\xbd"});
    CHECK(server.bodies == Strings{"b\xef\xbf\xbd"});
}
