#include "korvane-runner/Web/WebStage.h"

#include "Ambrel/Platform/Processes.h"
#include "Support/Expect.h"
#include "Support/Programs.h"
#include "korvane-runner/Signals.h"

#include <algorithm>
#include <limits>

using namespace ambrel;
using namespace korvane::runner;
using namespace korvane::test;

TEST_CASE("a web instance opens one window with its name and its data, and loads its site") {
    const WebStage stage;

    const auto& setup = stage.window().setup;
    CHECK(setup->title == "Mail");
    CHECK(setup->frame.width == 1160);
    CHECK(setup->frame.height == 780);
    CHECK_FALSE(setup->frame.position);
    CHECK(setup->data == stage.home + "/.local/share/web/data");
    CHECK(setup->cache == stage.home + "/.local/share/web/cache");
    CHECK(setup->handler == "korvane");
    CHECK(contains(stage.window().script, "KorvaneNotification"));
    CHECK(stage.window().loaded == Strings{"https://mail.example.org"});
    CHECK(stage.window().titles.empty());
    CHECK(stage.window().presented == 1);
}

TEST_CASE("an address with a scheme is loaded trimmed and as it stands") {
    for (const auto& row : std::vector<std::pair<std::string, std::string>>{
             {" \nhttp://localhost:8080/a b\t", "http://localhost:8080/a b"},
             {"data:text/html,<p>x", "data:text/html,<p>x"},
             {"file:/tmp/x.html", "file:/tmp/x.html"},
             {"localhost:8080", "https://localhost:8080"},
         }) {
        const auto& url = row.first;
        const auto& loaded = row.second;
        CAPTURE(url);
        const WebStage stage([&](auto& config) { config.url = url; });
        CHECK(stage.window().loaded == Strings{loaded});
    }
}

TEST_CASE("without an address nothing is loaded and the title says so") {
    for (const std::optional<std::string>& url :
         {std::optional<std::string>(), std::optional<std::string>(""),
          std::optional<std::string>("ht!tp://x"), std::optional<std::string>("https://")}) {
        const WebStage stage([&](auto& config) { config.url = url; });
        CHECK(stage.window().loaded.empty());
        CHECK(stage.window().titles == Strings{"Mail — invalid URL"});
        CHECK(stage.window().presented == 1);
    }
}

TEST_CASE("a badge that the page sets is shown, logged, and hides the title's count for good") {
    WebStage stage;

    stage.send("title", {{"title", "(3) Inbox"}});
    stage.desktop.fakeLoop.letTimePass();
    CHECK(stage.badges() == std::vector<std::int64_t>{3});
    stage.send("badge", {{"count", 5}, {"source", "api"}});
    stage.desktop.fakeLoop.letTimePass();
    stage.send("badge", {{"count", 0}, {"source", "api"}});
    stage.desktop.fakeLoop.letTimePass();
    stage.send("title", {{"title", "(4) Inbox"}});
    stage.desktop.fakeLoop.letTimePass();

    CHECK(stage.badges() == std::vector<std::int64_t>{3, 5, 0});
    CHECK(stage.log() == "badge: 3\nbadge: 5\nbadge: cleared\nbadge: cleared\n");
}

TEST_CASE("a count below 1, or one that is no integer, clears the badge") {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const auto& count : {Value(-2), Value(0), Value(2.5), Value(nan), Value("7"), Value()}) {
        WebStage stage;
        stage.send("badge", {{"count", 9}});
        stage.send("badge", {{"count", count}});
        CHECK(stage.log() == "badge: 9\nbadge: cleared\n");
        CHECK(stage.badges().empty()); // the 9 was gone before anybody could have seen it
    }
}

TEST_CASE("a message of a wrong shape or of an unknown type leaves no trace") {
    WebStage stage;
    for (const auto& body : {Value(), Value("badge"), Value(Value::List()), Value(Value::Fields()),
                             message("nothing", {{"count", 5}})}) {
        stage.events().messageArrived(body);
    }
    CHECK(stage.log().empty());
    CHECK(stage.desktop.fakeLoop.timers.empty());
    CHECK(stage.banners().empty());
}

TEST_CASE("a notification is a banner and a line of the log") {
    WebStage stage;

    stage.send("notify", {{"title", "New <b>mail</b>"}, {"body", "from A & B"}});
    stage.send("notify", {{"title", ""}, {"body", "x"}});
    stage.send("notify", {{"title", 5}});

    CHECK(stage.banners() ==
          std::vector<Banner>{{"New <b>mail</b>", "from A & B"}, {"Mail", "x"}, {"Mail", ""}});
    CHECK(stage.log() == "notify: New <b>mail</b> — from A & B\nnotify: Mail — x\n"
                         "notify: Mail — \n");
}

TEST_CASE("a banner's title is one line, its body has lines, and no control characters reach it") {
    WebStage stage;

    stage.send("notify", {{"title", "a\nb\x1b"}, {"body", "c\r\nd\x07"}});

    CHECK(stage.banners() == std::vector<Banner>{{"a b ", "c\nd "}});
    CHECK(stage.log() == "notify: a b  — c d \n");
}

TEST_CASE("of the banners behind the 8 under way the newest 64 wait, and the log has every one") {
    WebStage stage;
    std::string expected;
    for (int i = 0; i < 1000; ++i) {
        const auto number = std::to_string(i);
        stage.send("notify", {{"title", number}});
        expected += "notify: " + number + " — \n";
    }
    CHECK(stage.banners().size() == 8);
    CHECK(stage.log() == expected);

    auto& underWay = stage.desktop.fakeBanners.underWay;
    for (std::size_t i = 0; i < underWay.size(); ++i) {
        auto done = underWay[i];
        done();
        CHECK(stage.banners().size() - i - 1 <= 8);
    }

    REQUIRE(stage.banners().size() == 72);
    // The first were under way before the others came; of those the last 64 are left.
    for (std::size_t i = 0; i < 72; ++i)
        CHECK(stage.banners()[i].title == std::to_string(i < 8 ? i : i + 928));
    stage.send("notify", {{"title", "next"}});
    CHECK(stage.banners().back().title == "next");
}

TEST_CASE("100,000 messages are one signal to the icon and a line of the log each") {
    WebStage stage;

    for (int i = 1; i <= 100'000; ++i) stage.send("badge", {{"count", i}});

    CHECK(stage.desktop.fakeLoop.timers.size() == 2); // of the log and of the badge
    const auto log = stage.log();
    CHECK(stage.badges() == std::vector<std::int64_t>{100'000});
    CHECK(std::count(log.begin(), log.end(), '\n') == 100'000);
    CHECK(log.ends_with("badge: 99999\nbadge: 100000\n"));
}

TEST_CASE("the window's title follows a finished load, and not one without a title") {
    const WebStage stage;

    stage.events().loadFinished("Inbox");
    stage.events().loadFinished("");
    stage.send("title", {{"title", "(5) Inbox"}});
    CHECK(stage.window().titles == Strings{"Inbox"});

    stage.events().loadFinished(std::string(100'000'000, 'x'));
    CHECK(stage.window().titles.back().size() == 4096);
}

TEST_CASE("a page that is not there is replaced by one that says so, which has no say itself") {
    WebStage stage;

    stage.events().loadFailed(
        {LoadFailure::Kind::notReached, "https://mail.example.org/", "No route"});
    stage.send("title", {{"title", "(7) This page cannot be reached"}});
    stage.send("notify", {{"title", "x"}});

    REQUIRE(stage.window().pages.size() == 1);
    CHECK(contains(stage.window().pages[0].first, "No route"));
    CHECK(stage.window().pages[0].second == "https://mail.example.org/");
    CHECK(stage.window().titles.empty());
    CHECK(stage.log().empty());
    CHECK(stage.banners().empty());

    CHECK(stage.events().navigationWanted({"https://mail.example.org/", true}));
    stage.send("title", {{"title", "(7) Inbox"}});
    CHECK(stage.log() == "badge: 7\n");
}

TEST_CASE("a new window is a page in the same one, and nothing where it has no address") {
    const WebStage stage;

    for (const char* url : {"", "about:blank", "javascript:alert(1)", "file:///etc/passwd"}) {
        stage.events().newWindowWanted({url, true});
    }
    stage.events().newWindowWanted({"https://other.example.org/", true});
    stage.events().newWindowWanted({"https://popup.example.org/", false});

    CHECK(stage.window().loaded == Strings{"https://mail.example.org", "https://other.example.org/",
                                           "https://popup.example.org/"});
    CHECK(stage.window().asked.empty());
}

TEST_CASE("a page of files may open another file") {
    const WebStage stage([](auto& config) { config.url = "file:///a.html"; });
    stage.events().newWindowWanted({"file:///b.html", false});
    CHECK(stage.window().loaded == Strings{"file:///a.html", "file:///b.html"});
}

TEST_CASE("an address for another program leaves the window after a click, with the user's home") {
    WebStage stage;
    Fifo done(stage.tmp / "done");
    writeScript(stage.tmp / "open", "echo \"$1 ${HOME-none}\" > " + quoted(done.path()));

    CHECK_FALSE(stage.events().navigationWanted({"mailto:a@example.org", false}));
    CHECK_FALSE(stage.events().navigationWanted({"mailto:b@example.org?x=1&y=$(z)", true}));
    CHECK(done.line() == "mailto:b@example.org?x=1&y=$(z) none");
    CHECK(stage.window().asked.empty());
}

TEST_CASE("one click hands one address to another program, however many the page names") {
    WebStage stage;
    Fifo first(stage.tmp / "mailto:first");
    Fifo second(stage.tmp / "mailto:second");
    const auto folder = quoted(stage.tmp.path() + "/");
    writeScript(stage.tmp / "open",
                "echo \"$1\" >> " + folder + "all; echo \"$1\" > " + folder + "\"$1\"");

    for (const char* url : {"mailto:first", "mailto:other", "tel:1", "sms:2"})
        CHECK_FALSE(stage.events().navigationWanted({url, true}));
    CHECK(first.line() == "mailto:first");
    stage.desktop.fakeLoop.letTimePass();
    CHECK_FALSE(stage.events().navigationWanted({"mailto:second", true}));
    CHECK(second.line() == "mailto:second");

    CHECK(readFile(stage.tmp / "all") == "mailto:first\nmailto:second\n");
}

TEST_CASE("a new window for another program is one of its own, and only after a click") {
    WebStage stage;
    Fifo done(stage.tmp / "done");
    writeScript(stage.tmp / "open", "echo \"$1\" > " + quoted(done.path()));
    auto& asked = stage.desktop.window.asked;

    stage.events().newWindowWanted({"game://start/1", false});
    CHECK(asked.empty());
    stage.events().newWindowWanted({"game://start/2", true});
    CHECK(asked.size() == 1);
    stage.events().newWindowWanted({"mailto:a@example.org", false});
    stage.events().newWindowWanted({"mailto:b@example.org", true});

    CHECK(done.line() == "mailto:b@example.org");
    CHECK(asked.size() == 1);
    CHECK(stage.window().loaded == Strings{"https://mail.example.org"});
}

TEST_CASE("an address that is for another program is told on a page and not loaded") {
    const WebStage stage([](auto& config) { config.url = "ssh://host.example/"; });

    CHECK(stage.window().loaded.empty());
    REQUIRE(stage.window().pages.size() == 1);
    CHECK(
        contains(stage.window().pages[0].first, "Addresses of this kind are for other programs."));
}

TEST_CASE(
    "a finished download is told by a banner and not by the log, a cancelled one by nothing") {
    WebStage stage;

    stage.events().downloadEnded({.place = stage.user / "Downloads/a b.zip", .failure = ""});
    stage.events().downloadEnded({.place = "/disk/b", .failure = ""});
    stage.events().downloadEnded({.place = "/u/Downloads/c.zip", .failure = "Disk full"});
    stage.events().downloadEnded({.place = "/u/Downloads/d", .failure = "x", .wasCancelled = true});

    CHECK(stage.banners() == std::vector<Banner>{{"Download finished", "a b.zip is in ~/Downloads"},
                                                 {"Download finished", "b is in /disk"},
                                                 {"Download failed", "c.zip: Disk full"}});
    CHECK(stage.log().empty());
}

TEST_CASE("closing the window keeps its frame, clears the badge, writes the log and ends with 0") {
    WebStage stage;
    stage.send("badge", {{"count", 2}});
    stage.desktop.fakeLoop.letTimePass();
    stage.send("notify", {{"title", "last"}});
    stage.desktop.window.frame.width = 700;
    stage.desktop.window.frame.position = WindowFrame::Position{10, 20};

    stage.events().closed();
    stage.events().closed();

    CHECK(stage.desktop.fakeLoop.status == 0);
    CHECK(stage.badges() == std::vector<std::int64_t>{2, 0});
    CHECK(readFile(stage.home + "/korvane-instance.log") == "badge: 2\nnotify: last — \n");
    CHECK(readFile(stage.home + "/KorvaneWeb-app.korvane.instance.mail") ==
          "size 700 780\nposition 10 20\n");
    CHECK(stage.desktop.flushed == 1);
}

TEST_CASE("what a page says while the last of an instance is sent comes to nothing") {
    WebStage stage;
    stage.send("badge", {{"count", 2}});
    stage.desktop.fakeLoop.letTimePass();
    stage.desktop.whenFlushed = [&] {
        stage.send("badge", {{"count", 3}});
        stage.send("notify", {{"title", "late"}});
        stage.desktop.fakeLoop.letTimePass();
    };

    stage.events().closed();

    CHECK(stage.badges() == std::vector<std::int64_t>{2, 0});
    CHECK(stage.banners().empty());
    CHECK(stage.log() == "badge: 2\n");
}

TEST_CASE("a window opens where it was closed, and an icon without a badge is left alone") {
    WebStage stage([](auto& config) {
        writeFile(config.instanceHome + "/KorvaneWeb-app.korvane.instance.mail",
                  "size 640 480\nposition 5 6\nmaximized\n");
    });
    CHECK(stage.window().setup->frame.width == 640);
    CHECK(stage.window().setup->frame.position == WindowFrame::Position{5, 6});
    CHECK(stage.window().setup->frame.maximized);

    stage.events().closed();
    CHECK(stage.badges().empty());
}

TEST_CASE("what the loop and the desktop still hold when an instance is gone does nothing") {
    WebStage stage;
    stage.send("badge", {{"count", 2}});
    stage.send("notify", {{"title", "x"}});

    stage.instance.reset();
    stage.desktop.fakeLoop.letTimePass();
    for (const auto& done : stage.desktop.fakeBanners.underWay) done();

    CHECK(stage.badges().empty());
    CHECK(stage.log() == "badge: 2\nnotify: x — \n");
}

TEST_CASE("an instance with a status item shows its window by Show and ends by Quit") {
    WebStage stage([](auto& config) { config.menuBarIcon = true; });
    REQUIRE(stage.desktop.fakeStatusArea.shown);
    CHECK(stage.desktop.fakeStatusArea.shown->toolTip == "Mail");
    const int before = stage.window().presented;

    stage.desktop.fakeStatusArea.choose("Show Mail");
    CHECK(stage.window().presented == before + 1);
    CHECK(stage.desktop.fakeWindows.broughtToFront == std::vector{std::set{ownProcessId()}});
    CHECK_FALSE(stage.desktop.fakeLoop.status);

    stage.desktop.fakeStatusArea.choose("Quit Mail");
    CHECK(stage.desktop.fakeLoop.status == 0);
    stage.instance.reset();
    CHECK_FALSE(stage.desktop.fakeStatusArea.shown);
}

TEST_CASE("closing the window ends an instance with a status item, too") {
    const WebStage stage([](auto& config) { config.menuBarIcon = true; });
    stage.events().closed();
    CHECK(stage.desktop.fakeLoop.status == 0);
}

TEST_CASE("an instance that asks for no status item has none") {
    const WebStage stage;
    CHECK_FALSE(stage.desktop.fakeStatusArea.shown);
}
