#include "Manager/Operations/Registering.h"

#include "Scene.h"

namespace korvane::test {

using Kind = Refusal::Kind;

TEST_CASE("an instance is taken off the desktop and shown again") {
    const Scene scene;
    const auto record = scene.instance();
    const auto file = scene.user.data + "/applications/app.korvane.instance.work.desktop";

    const auto removed = unregisterInstance(record, scene.user);
    REQUIRE(removed);
    CHECK(removed->file == file);
    CHECK_FALSE(isThere(file));
    CHECK_FALSE(unregisterInstance(record, scene.user));
    const auto entry = registerInstance(record, scene.user, scene.environment);

    CHECK(entry.file == file);
    CHECK(entry.bundle == record.bundleURL);
    CHECK(isThere(file));
}

TEST_CASE("an instance that would hide a program is not shown") {
    const Scene scene;
    const auto record = scene.instance();
    const auto file = writeFile(scene.tmp / "share/applications/app.korvane.instance.work.desktop",
                                "[Desktop Entry]\n");

    const auto refusal =
        refusalOf(scene, [&] { registerInstance(record, scene.user, scene.environment); });

    CHECK(refusal.kind == Kind::entryTaken);
    CHECK(refusal.subject == file);
    CHECK(refusal.remedy == Remedy::createAgainWithIdentifier);
}

TEST_CASE("without a place for entries, or words for one, nothing is shown") {
    Scene scene;
    auto spaced = scene.request("Spaced");
    spaced.outputFolder = scene.tmp / "with space";
    const auto record = scene.make(spaced).record;

    scene.user.data = "";
    const auto nowhere =
        refusalOf(scene, [&] { registerInstance(record, scene.user, scene.environment); });
    scene.user.data = scene.tmp / "a=b";
    const auto wordless =
        refusalOf(scene, [&] { registerInstance(record, scene.user, scene.environment); });

    CHECK(nowhere.kind == Kind::homeIsMissing);
    CHECK(wordless.kind == Kind::notDescribable);
    CHECK(beginsWith(wordless.subject, scene.user.data));
}

} // namespace korvane::test
