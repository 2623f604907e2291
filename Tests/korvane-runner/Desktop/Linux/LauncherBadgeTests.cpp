#include "korvane-runner/Desktop/Linux/LauncherBadge.h"

#include "PrivateBus.h"
#include "Support/Expect.h"
#include "korvane-runner/Desktop/Linux/GLibLoop.h"

#include <limits>

using namespace korvane::runner;
using namespace korvane::test;
using namespace std::chrono_literals;

namespace {

std::string update(const std::string& count, const std::string& isVisible) {
    return "/com/canonical/unity/launcherentry/1 Update ('application://org.example.a.desktop', "
           "{'count': <int64 " +
           count + ">, 'count-visible': <" + isVisible + ">})";
}

} // namespace

TEST_CASE("a number is sent for the instance's desktop entry, and none below one") {
    const PrivateBus privateBus;
    GLibLoop loop;
    BusPeer dock(privateBus);
    Strings heard;
    dock.listen("com.canonical.Unity.LauncherEntry", [&](const std::string& text) {
        heard.push_back(text);
        if (heard.size() == 5) loop.end(0);
    });
    SessionBus bus;
    LauncherBadge badge("org.example.a", bus);

    for (const auto count : {std::int64_t{7}, std::int64_t{0}, std::int64_t{1}, std::int64_t{-3},
                             std::numeric_limits<std::int64_t>::max()}) {
        badge.show(count);
    }

    loop.run();
    CHECK(heard == Strings{update("7", "true"), update("0", "false"), update("1", "true"),
                           update("0", "false"), update("9223372036854775807", "true")});
}

TEST_CASE("a dock that comes later is sent the number that there is") {
    const PrivateBus privateBus;
    SessionBus bus;
    LauncherBadge badge("org.example.a", bus);
    badge.show(7);
    bus.flush(1h);
    BusPeer dock(privateBus);
    Strings heard;
    dock.listen("com.canonical.Unity.LauncherEntry",
                [&](const std::string& text) { heard.push_back(text); });

    dock.own("com.canonical.Unity");

    while (heard.empty()) g_main_context_iteration(nullptr, TRUE);
    CHECK(heard == Strings{update("7", "true")});

    int changes = 0;
    bus.whenOwnerChanges("com.canonical.Unity", [&] { ++changes; });
    bus.flush(1h);
    badge.show(0);
    dock.release("com.canonical.Unity");
    dock.own("com.canonical.Unity"); // to which there is nothing to be said
    while (changes < 2) g_main_context_iteration(nullptr, TRUE);
    badge.show(1);
    while (heard.size() < 3) g_main_context_iteration(nullptr, TRUE);
    CHECK(heard == Strings{update("7", "true"), update("0", "false"), update("1", "true")});
}
