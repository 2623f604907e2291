#include "Manager/Operations/CreationNotices.h"

#include "Manager/Programs/WebEngine.h"
#include "Scene.h"

namespace korvane::test {

using Kind = Notice::Kind;
using ambrel::ShortcutKind;

TEST_CASE("an application that the system keeps in one piece is told of") {
    const Scene scene;
    auto plan = scene.plan(scene.appRequest());
    plan.target->sandboxed = true;
    plan.target->prohibitsMultipleInstances = true;
    const ambrel::InstanceRecord made{plan.bundle, {}};

    const auto notices = noticesOn(plan, made, scene.user);

    CHECK(noticeOf(notices, Kind::targetIsSandboxed).subject == "Mail");
    CHECK(noticeOf(notices, Kind::targetRunsOnce).subject == "Mail");
}

TEST_CASE("what the strategy cannot do is told of, and a status item needs no word") {
    const Scene scene;
    auto menuBar = scene.request("Bar");
    menuBar.menuBarIcon = true;
    auto fixed = scene.appRequest("Fixed");
    fixed.strategy = ambrel::Strategy::unsupported;

    CHECK(scene.make(menuBar).notices.empty());
    CHECK(find(scene.make(fixed).notices, Kind::strategyIsUnsupported) != nullptr);
}

TEST_CASE("an engine that the machine does not have is told of by its package") {
    const Scene scene;
    auto web = scene.request("Site");
    web.kind = ShortcutKind::web;
    web.url = "https://example.org/";
    auto plan = scene.plan(web);
    CHECK(plan.missingPackage == findMissingWebPackage());
    const ambrel::InstanceRecord made{plan.bundle, {}};

    plan.missingPackage = "libengine-6";
    CHECK(noticeOf(noticesOn(plan, made, scene.user), Kind::engineIsMissing).subject ==
          "libengine-6");
    plan.missingPackage.reset();
    CHECK(find(noticesOn(plan, made, scene.user), Kind::engineIsMissing) == nullptr);
    CHECK_FALSE(scene.plan(scene.request()).missingPackage.has_value());
}

TEST_CASE("paths that lead nowhere now are told of, and kept") {
    const Scene scene;
    auto document = scene.request("Paper");
    document.kind = ShortcutKind::file;
    document.openPath = "~/paper.pdf";
    auto command = scene.request("Tool");
    command.workingDirectory = "/nowhere";

    const auto paper = scene.make(document);
    const auto tool = scene.make(command);

    CHECK(noticeOf(paper.notices, Kind::nothingAtPath).subject == scene.home / "paper.pdf");
    CHECK(paper.record.config.openPath == "~/paper.pdf");
    CHECK(noticeOf(tool.notices, Kind::nothingAtPath).subject == "/nowhere");
}

TEST_CASE("a label without an icon to draw it on is told of") {
    const Scene scene;
    auto request = scene.request();
    request.iconLabel = ambrel::IconLabel{"W", "FFFFFF", ambrel::IconLabel::Position::top};

    CHECK(noticeOf(scene.make(request).notices, Kind::labelWithoutIcon).remedy ==
          Remedy::chooseIcon);
}

TEST_CASE("a home that is long, the user's own or not to be furnished is told of") {
    const Scene scene;
    auto longHome = scene.request("Long");
    longHome.home = scene.home / std::string(80, 'x');
    auto ownHome = scene.request("Own");
    ownHome.home = "~";
    auto odd = scene.request("Odd");
    odd.environment = {{"TMPDIR", "{{instanceHome}}/t"}};
    const auto inTheWay = writeFile(scene.homeOf("Odd") + "/t", "a file");

    const auto isLong = noticeOf(scene.make(longHome).notices, Kind::homeIsLong);
    const auto isOwn = noticeOf(scene.make(ownHome).notices, Kind::homeIsNotPrivate);
    const auto notFurnished = noticeOf(scene.make(odd).notices, Kind::homeNotFurnished);

    CHECK(isLong.subject == *longHome.home);
    CHECK(isLong.remedy == Remedy::chooseHome);
    CHECK(isOwn.subject == scene.home.path());
    CHECK(notFurnished.subject == scene.homeOf("Odd"));
    CHECK(readFile(inTheWay) == "a file");
}

TEST_CASE("a home that was there is told of where nobody asked for it") {
    const Scene scene;
    makeFolder(scene.homeOf());
    makeFolder(scene.home / "chosen");
    auto chosen = scene.request("Chosen");
    chosen.home = "~/chosen";

    const auto found = scene.make(scene.request());
    const auto asked = scene.make(chosen);

    CHECK(found.homeExisted);
    CHECK(noticeOf(found.notices, Kind::homeExisted).subject == "~/KorvaneInstances/Work");
    CHECK(asked.homeExisted);
    CHECK(find(asked.notices, Kind::homeExisted) == nullptr);
}

TEST_CASE("the profile that was used is told of, as a warning where it is broken") {
    const Scene scene;
    const auto write = [&](const std::string& confidence) {
        return writeFile(scene.home / ".config/korvane/profiles/org.example.mail.json",
                         R"({"bundleId": "org.example.mail", "displayName": "Mail",)"
                         R"("sandboxed": false, "strategy": "home-override",)"
                         R"("singleton": "none", "prefsLeak": false, "extraArgs": ["-x"],)"
                         R"("verifiedOn": [], "confidence": ")" +
                             confidence + R"("})");
    };
    const auto file = write("community");
    const auto used = scene.make(scene.appRequest("One"));
    write("broken");
    const auto broken = scene.make(scene.appRequest("Two"));

    const auto information = noticeOf(used.notices, Kind::profileUsed);
    CHECK(information.severity == Notice::Severity::information);
    CHECK(information.subject == file);
    REQUIRE(used.profile);
    CHECK(used.profile->profile.displayName == "Mail");
    CHECK(used.record.config.extraArgs.front() == "-x");
    CHECK(noticeOf(broken.notices, Kind::profileIsBroken).severity == Notice::Severity::warning);
}

TEST_CASE("given arguments stand for those of the profile, which is then not said to be used") {
    const Scene scene;
    const auto file = writeFile(scene.home / ".config/korvane/profiles/org.example.mail.json",
                                R"({"bundleId": "org.example.mail", "displayName": "Mail",)"
                                R"("sandboxed": false, "strategy": "home-override",)"
                                R"("singleton": "none", "prefsLeak": false, "extraArgs": ["-x"],)"
                                R"("verifiedOn": [], "confidence": "community"})");
    auto request = scene.appRequest();
    request.args = {"-y"};

    const auto created = scene.make(request);

    CHECK(find(created.notices, Kind::profileUsed) == nullptr);
    const auto notice = noticeOf(created.notices, Kind::argumentsOfProfileUnused);
    CHECK(notice.subject == file);
    CHECK(notice.severity == Notice::Severity::information);
    CHECK(created.record.config.extraArgs == Strings{"-y"});
}

TEST_CASE("an instance that no desktop entry can describe is made, and the failure told of") {
    Scene scene;
    scene.user.data = scene.tmp / "a=b";
    auto request = scene.request();
    request.outputFolder = scene.tmp / "with space";

    const auto created = scene.make(request);

    const auto notice = noticeOf(created.notices, Kind::notRegistered);
    CHECK(notice.remedy == Remedy::registerAgain);
    CHECK(notice.subject == created.record.bundleURL);
    CHECK(isRealFolder(created.record.bundleURL));
}

} // namespace korvane::test
