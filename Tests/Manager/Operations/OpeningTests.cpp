#include "Manager/Operations/Opening.h"

#include "Scene.h"

#include <unistd.h>

namespace korvane::test {

using Kind = Refusal::Kind;
using ambrel::ShortcutKind;

TEST_CASE("a run is prepared by making the home that has gone") {
    const Scene scene;
    const auto record = scene.instance();
    ambrel::fileSystem::removeTree(scene.homeOf());

    const auto runner = prepareRun(record, scene.user);

    CHECK(runner == record.bundleURL + "/Contents/MacOS/runner");
    CHECK(modeOf(scene.homeOf()) == 0700);
    CHECK_NOTHROW(requireOpenable(record, scene.user));
}

TEST_CASE("an instance without its runner is damaged") {
    const Scene scene;
    const auto record = scene.instance();
    REQUIRE(::unlink((record.bundleURL + "/Contents/MacOS/runner").c_str()) == 0);

    for (const auto& refusal : {refusalOf(scene, [&] { prepareRun(record, scene.user); }),
                                refusalOf(scene, [&] { requireOpenable(record, scene.user); }),
                                refusalOf(scene, [&] { open(record, scene.user); })}) {
        CHECK(refusal.kind == Kind::damagedInstance);
        CHECK(refusal.subject == record.bundleURL);
        CHECK(refusal.remedy == Remedy::createAgain);
    }
}

TEST_CASE("what would fail unseen is refused with what is not there") {
    const Scene scene;
    const auto made = scene.instance();
    const auto app = scene.installApp();
    const auto noProgram = AppBundleBuilder(scene.tmp / "None.app").identifier("none").write();
    struct Row {
        ShortcutKind kind;
        std::string opens;
        Kind refusal;
        std::string subject;
    };
    const Row rows[] = {
        {ShortcutKind::web, "https://example.org/", Kind::notHosted, ""},
        {ShortcutKind::file, "", Kind::notLaunchable, ""},
        {ShortcutKind::file, "~/paper", Kind::notLaunchable, scene.home / "paper"},
        {ShortcutKind::command, "", Kind::notLaunchable, ""},
        {ShortcutKind::command, "~/tool", Kind::notLaunchable, scene.home / "tool"},
        {ShortcutKind::app, "/gone.app", Kind::unreadableApplication, "/gone.app"},
        {ShortcutKind::app, noProgram, Kind::notLaunchable, noProgram + "/Contents/MacOS/None"},
    };
    for (const auto& row : rows) {
        CAPTURE(row.opens);
        auto record = made;
        record.config.kind = row.kind;
        record.config.url = row.opens;
        record.config.openPath = row.opens;
        record.config.commandPath = row.opens;
        record.config.targetAppPath = row.opens;
        const auto refusal = refusalOf(scene, [&] { requireOpenable(record, scene.user); });
        CHECK(refusal.kind == row.refusal);
        CHECK(refusal.subject == row.subject);
    }
    auto fixed = made;
    fixed.config.kind = ShortcutKind::app;
    fixed.config.targetAppPath = app;
    CHECK_NOTHROW(requireOpenable(fixed, scene.user));
    fixed.config.strategy = ambrel::Strategy::unsupported;
    CHECK(refusalOf(scene, [&] { requireOpenable(fixed, scene.user); }).subject ==
          "org.example.mail");
}

TEST_CASE("a command whose folder is not there is not opened") {
    const Scene scene;
    auto record = scene.instance();
    record.config.workingDirectory = "/nowhere";

    const auto refusal = refusalOf(scene, [&] { requireOpenable(record, scene.user); });

    CHECK(refusal.kind == Kind::notLaunchable);
    CHECK(refusal.subject == "/nowhere");
}

} // namespace korvane::test
