#include "korvane-runner/Desktop/Linux/LauncherBadge.h"

#include "PrivateBus.h"
#include "Support/Expect.h"
#include "korvane-runner/Desktop/Linux/GLibLoop.h"

#include <limits>

using namespace korvane::runner;
using namespace korvane::test;

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
