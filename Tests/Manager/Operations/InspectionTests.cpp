#include "Manager/Operations/Inspection.h"

#include "Scene.h"

namespace korvane::test {

TEST_CASE("an inspection tells the engine and how an instance of whatever id is started") {
    const Scene scene;
    const auto app = ambrel::AppBundle::read(scene.installApp("org.Mozilla.firefox"));
    REQUIRE(app);

    const auto found = inspect(*app, UseProfile::yes, scene.user, scene.environment);

    CHECK(found.app.bundleId == "org.Mozilla.firefox");
    CHECK(found.engine.engine == ambrel::AppEngine::firefox);
    CHECK(found.engine.proof == "org.Mozilla.firefox");
    CHECK(std::ranges::count(found.arguments, desktopIdPlaceholder) == 2);
    CHECK(inspect(*app, UseProfile::no, scene.user, scene.environment).arguments ==
          Strings{"-profile", "{{instanceHome}}/FirefoxProfile", "-no-remote"});
}

} // namespace korvane::test
