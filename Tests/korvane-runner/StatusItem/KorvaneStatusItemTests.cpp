#include "korvane-runner/StatusItem/KorvaneStatusItem.h"

#include "Support/Builders.h"
#include "Support/Expect.h"
#include "korvane-runner/Desktop/FakeDesktop.h"

using namespace ambrel;
using namespace korvane::runner;
using namespace korvane::test;

namespace {

InstanceConfig work(const std::string& name = "Work Mail") {
    auto config = smallestConfig();
    config.displayName = name;
    config.bundleId = "app.korvane.instance.work";
    return config;
}

void nothing() {}

} // namespace

TEST_CASE("the menu is the name, which cannot be chosen, a line, Show and Quit") {
    FakeStatusArea area;
    const KorvaneStatusItem item(work(), {}, area, nothing, nothing);

    REQUIRE(area.shown);
    CHECK(area.shown->id == "app.korvane.instance.work");
    CHECK(area.shown->toolTip == "Work Mail");
    const auto& menu = area.shown->menu;
    REQUIRE(menu.size() == 4);
    CHECK(menu[0].title == "Work Mail");
    CHECK_FALSE(menu[0].chosen);
    CHECK(menu[1].title.empty());
    CHECK_FALSE(menu[1].chosen);
    CHECK(menu[2].title == "Show Work Mail");
    CHECK(menu[2].key == '\0');
    CHECK(menu[3].title == "Quit Work Mail");
    CHECK(menu[3].key == 'q');
}

TEST_CASE("Show and Quit each do what they were given, and nothing else") {
    FakeStatusArea area;
    std::string done;
    const KorvaneStatusItem item(
        work(), {}, area, [&] { done += "show "; }, [&] { done += "quit "; });

    area.choose("Show Work Mail");
    CHECK(done == "show ");
    area.choose("Quit Work Mail");
    area.choose("Quit Work Mail");
    CHECK(done == "show quit quit ");
    item.focusAction();
    item.quitAction();
    CHECK(done == "show quit quit show quit ");
}

TEST_CASE("the item is there as long as its object") {
    FakeStatusArea area;
    {
        const KorvaneStatusItem item(work(), {}, area, nothing, nothing);
        CHECK(area.shown);
    }
    CHECK_FALSE(area.shown);
}

TEST_CASE("the picture is a template exactly when the configuration says so") {
    for (const bool isTemplate : {false, true}) {
        FakeStatusArea area;
        auto config = work();
        config.menuBarIconTemplate = isTemplate;
        const KorvaneStatusItem item(config, {}, area, nothing, nothing);
        CHECK(area.shown->image().isTemplate == isTemplate);
    }
}
