#include "Scene.h"

#include "Ambrel/Platform/OwnedFd.h"
#include "Manager/Desktop/Registration.h"
#include "Support/Waiting.h"

#include <fcntl.h>
#include <functional>
#include <thread>
#include <unistd.h>

namespace korvane::test {

using Kind = Refusal::Kind;

namespace {

/// An instance that is to be replaced by one with another icon.
struct Replacing : Scene {
    ambrel::InstanceRecord old = instance();
    Path icon = writeFile(tmp / "icon.icns", "icns picture");
    CreationPlan plan = planOfReplacing();

    /// The refusal of performing the plan when `meanwhile` is done while the bundle is built.
    Refusal refusalWhile(const std::function<void()>& meanwhile) const {
        // Whoever opens the icon is building by then, and waits until somebody writes to it.
        const auto complete = tmp / "complete.icns";
        ambrel::fileSystem::move(icon, complete);
        makeFifo(icon);
        std::thread other([&] {
            const ambrel::OwnedFd writer(::open(icon.c_str(), O_WRONLY | O_CLOEXEC));
            meanwhile();
            ambrel::fileSystem::exchange(complete, icon);
            [[maybe_unused]] const auto written = ::write(writer.get(), "icns", 4);
        });
        const auto letOtherEnd = [&] {
            // It would wait for ever for an icon that was never opened.
            constexpr int flags = O_RDONLY | O_NONBLOCK | O_CLOEXEC;
            const ambrel::OwnedFd reader(::open(icon.c_str(), flags));
            other.join();
        };
        return expectThrow<Refusal>([&] {
            try {
                perform(plan, user, environment);
            } catch (...) {
                letOtherEnd();
                throw;
            }
            letOtherEnd();
        });
    }

private:
    CreationPlan planOfReplacing() const {
        auto wanted = request();
        wanted.existing = Existing::replace;
        wanted.icon = icon;
        return Scene::plan(wanted);
    }
};

} // namespace

TEST_CASE("a name, a kind and what it opens are enough for an instance") {
    const Scene scene;

    const auto created = scene.make(scene.request());

    CHECK(created.record.bundleURL == scene.bundle());
    CHECK(created.record.config.displayName == "Work");
    CHECK(created.record.config.bundleId == "app.korvane.instance.work");
    CHECK(created.record.config.instanceHome == "~/KorvaneInstances/Work");
    CHECK(created.record.config.commandPath == "/bin/sh");
    CHECK(created.record.config.shareUserFolders);
    CHECK(scene.configOf(scene.bundle()).encode() == created.record.config.encode());
    CHECK(modeOf(scene.homeOf()) == 0700);
    CHECK_FALSE(created.replaced);
    CHECK_FALSE(created.homeExisted);
    CHECK_FALSE(created.profile);
    CHECK(created.notices.empty());
    CHECK(registration::findEntry(created.record, scene.user));
    CHECK(namesIn(scene.home / "Applications") == Strings{"Work.app"});
}

TEST_CASE("a plan alone changes nothing and tells what will be made") {
    const Scene scene;
    makeFolder(scene.homeOf());
    const auto before = scene.everything();

    const auto plan = scene.plan(scene.request(" Work "));

    CHECK(scene.everything() == before);
    CHECK(plan.request.name == "Work");
    CHECK(plan.bundle == scene.bundle());
    CHECK_FALSE(plan.replaced);
    CHECK(plan.replacedSize == TreeSize{});
    CHECK(plan.homeExists);
    CHECK(perform(plan, scene.user, scene.environment).record.bundleURL == plan.bundle);
}

TEST_CASE("every field of a request reaches the configuration") {
    const Scene scene;
    auto request = scene.appRequest();
    request.targetApp = AppBundleBuilder(scene.home / "Applications/Reader.app")
                            .identifier("org.example.reader")
                            .executable("program", "exit 0")
                            .entry("KorvaneMimeTypes", "<string>text/plain;text/html;</string>")
                            .write();
    request.home = "~/h";
    request.outputFolder = scene.tmp / "out";
    request.bundleId = "org.example.work";
    request.strategy = ambrel::Strategy::wrapperIdentity;
    request.args = {"-a"};
    request.addedArgs = {"-b"};
    request.environment = {{"A", "1"}};
    request.processName = "mailer";
    request.shareUserFolders = false;
    request.icon = writeFile(scene.tmp / "icon.icns", "icns picture");
    request.iconLabel = ambrel::IconLabel{"W", "FFFFFF", ambrel::IconLabel::Position::top};
    request.infoPlistOverrides = {{"Key", "yes"}};
    request.registerAsBrowser = true;
    request.openWithPassthrough = true;
    request.menuBarIcon = true;
    request.menuBarIconTemplate = true;

    const auto created = scene.make(request);

    CHECK(created.record.bundleURL == scene.tmp / "out/Work.app");
    const auto& config = created.record.config;
    CHECK(config.targetAppPath == request.targetApp);
    CHECK(config.instanceHome == "~/h");
    CHECK(config.bundleId == "org.example.work");
    CHECK(config.strategy == ambrel::Strategy::wrapperIdentity);
    CHECK(config.extraArgs == Strings{"-a", "-b"});
    CHECK(config.environment.at("A") == "1");
    CHECK(config.infoPlistOverrides ==
          ambrel::StringMap{{"Key", "yes"}, {ambrel::processNameKey, "mailer"}});
    CHECK_FALSE(config.shareUserFolders);
    CHECK(config.iconLabel == request.iconLabel);
    CHECK(config.registerAsBrowser);
    CHECK(config.openWithPassthrough);
    CHECK(config.menuBarIcon);
    CHECK(config.menuBarIconTemplate);
    CHECK(readFile(created.record.bundleURL + "/Contents/Resources/AppIcon.icns") ==
          "icns picture");
}

TEST_CASE("a request that can become no instance is refused by what is wrong with it") {
    const Scene scene;
    struct Row {
        Kind kind;
        std::string subject;
        std::function<void(CreateRequest&)> change;
    };
    const std::string bad = "x\xff";
    const auto label = [](const std::string& color) {
        return ambrel::IconLabel{"x", color, ambrel::IconLabel::Position::top};
    };
    const Row rows[] = {
        {Kind::badName, "a/b", [](auto& request) { request.name = "a/b"; }},
        {Kind::badName, "", [](auto& request) { request.name = " "; }},
        {Kind::badText, bad, [&](auto& request) { request.name = bad; }},
        {Kind::badText, bad, [&](auto& request) { request.home = bad; }},
        {Kind::badText, bad, [&](auto& request) { request.commandArgs = {bad}; }},
        {Kind::badText, bad,
         [&](auto& request) {
             request.environment = {{"A", bad}};
         }},
        {Kind::badText, bad,
         [&](auto& request) {
             request.infoPlistOverrides = {{bad, "1"}};
         }},
        {Kind::badPath, "dir", [](auto& request) { request.home = "dir"; }},
        {Kind::badPath, "", [](auto& request) { request.outputFolder = ""; }},
        {Kind::badPath, "~/out", [](auto& request) { request.outputFolder = "~/out"; }},
        {Kind::badPath, "tool", [](auto& request) { request.commandPath = "tool"; }},
        {Kind::badColor, "red", [&](auto& request) { request.iconLabel = label("red"); }},
        {Kind::badIdentifier, "", [](auto& request) { request.bundleId = ""; }},
        {Kind::badProcessName, "a/b",
         [&](auto& request) {
             request = scene.appRequest();
             request.processName = "a/b";
         }},
        {Kind::nothingToOpen, "", [](auto& request) { request.commandPath = ""; }},
        {Kind::badAddress, "my mail",
         [](auto& request) {
             request.kind = ambrel::ShortcutKind::web;
             request.url = "my mail";
         }},
        {Kind::unusableIcon, "/nope.png", [](auto& request) { request.icon = "/nope.png"; }},
        {Kind::unknownUser, "~no-such-user-here/x",
         [](auto& request) { request.home = "~no-such-user-here/x"; }},
        {Kind::unknownProgram, "/nope", [](auto& request) { request.commandPath = "/nope"; }},
        {Kind::notOffered, "", [](auto& request) { request.inTerminal = true; }},
        {Kind::unreadableApplication, "/nope.app",
         [](auto& request) {
             request.kind = ambrel::ShortcutKind::app;
             request.targetApp = "/nope.app";
         }},
    };
    for (const auto& row : rows) {
        CAPTURE(row.subject);
        auto request = scene.request();
        row.change(request);
        const auto refusal = refusalOf(scene, [&] { scene.plan(request); });
        CHECK(refusal.kind == row.kind);
        CHECK(refusal.subject == row.subject);
    }
}

TEST_CASE("a field that the kind does not heed is refused, never stored") {
    const Scene scene;
    using ambrel::ShortcutKind;
    struct Row {
        std::string field;
        Strings heededBy;
        std::function<void(CreateRequest&)> change;
    };
    const Row rows[] = {
        {"args", {"app"}, [](auto& request) { request.args = {"a"}; }},
        {"addedArgs", {"app"}, [](auto& request) { request.addedArgs = {"a"}; }},
        {"strategy", {"app"}, [](auto& request) { request.strategy = ambrel::Strategy{}; }},
        {"shareUserFolders",
         {"app", "web"},
         [](auto& request) { request.shareUserFolders = false; }},
        {"environment",
         {"app", "command"},
         [](auto& request) {
             request.environment = {{"A", ""}};
         }},
        {"workingDirectory", {"command"}, [](auto& request) { request.workingDirectory = "/"; }},
        {"processName", {"app"}, [](auto& request) { request.processName = "p"; }},
        {"useProfile", {"app"}, [](auto& request) { request.useProfile = UseProfile::no; }},
        {"home", {"app", "web", "command"}, [](auto& request) { request.home = "/h"; }},
        {"registerAsBrowser", {"app"}, [](auto& request) { request.registerAsBrowser = true; }},
        {"openWithPassthrough", {"app"}, [](auto& request) { request.openWithPassthrough = true; }},
    };
    for (const auto& row : rows) {
        for (const auto& entry : ambrel::RawValues<ShortcutKind>::table) {
            const auto& word = entry.second;
            if (std::ranges::find(row.heededBy, word) != row.heededBy.end()) continue;
            CAPTURE(row.field);
            CAPTURE(word);
            auto request = scene.appRequest();
            request.kind = entry.first;
            request.openPath = "/";
            request.url = "https://example.org/";
            row.change(request);
            const auto refusal = refusalOf(scene, [&] { scene.plan(request); });
            CHECK(refusal.kind == Kind::hasNoEffect);
            CHECK(refusal.subject == row.field);
            CHECK(contains(refusal.sentence(), "for the kind " + row.heededBy.front()));
        }
    }
    auto hidden = scene.request();
    hidden.hideIcon = true;
    const auto refusal = refusalOf(scene, [&] { scene.plan(hidden); });
    CHECK(refusal.kind == Kind::hasNoEffect);
    CHECK(refusal.remedy == Remedy::hideFromDesktop);
}

TEST_CASE("what stands in the place of the instance is told apart") {
    const Scene scene;
    scene.instance("Work");
    makeFolder(scene.bundle("Folder"));

    const auto exists = refusalOf(scene, [&] { scene.plan(scene.request("Work")); });
    auto replacing = scene.request("Folder");
    replacing.existing = Existing::replace;
    const auto other = refusalOf(scene, [&] { scene.plan(replacing); });

    CHECK(exists.kind == Kind::instanceExists);
    CHECK(exists.subject == scene.bundle());
    CHECK(exists.remedy == Remedy::replace);
    CHECK(other.kind == Kind::notAnInstance);
    CHECK(other.subject == scene.bundle("Folder"));
    CHECK(other.remedy == Remedy::chooseName);
}

TEST_CASE("what belongs to another instance or program is refused with what to choose") {
    const Scene scene;
    scene.instance("Work");
    auto sameIdentifier = scene.request("Other");
    sameIdentifier.bundleId = "APP.korvane.instance.work";
    auto sameHome = scene.request("Other");
    sameHome.home = "~/KorvaneInstances/./Work";
    auto sameEntry = scene.request("Other");
    sameEntry.bundleId = "org.example.mail";
    const auto entry = writeFile(scene.tmp / "share/applications/org.example.mail.desktop",
                                 "[Desktop Entry]\nType=Application\nName=Mail\nExec=/bin/sh\n");

    const auto identifier = refusalOf(scene, [&] { scene.plan(sameIdentifier); });
    const auto home = refusalOf(scene, [&] { scene.plan(sameHome); });
    const auto onDesktop = refusalOf(scene, [&] { scene.plan(sameEntry); });

    CHECK(identifier.kind == Kind::identifierTaken);
    CHECK(identifier.subject == "APP.korvane.instance.work");
    CHECK(identifier.remedy == Remedy::chooseIdentifier);
    CHECK(home.kind == Kind::homeTaken);
    CHECK(home.remedy == Remedy::chooseHome);
    CHECK(onDesktop.kind == Kind::entryTaken);
    CHECK(onDesktop.subject == entry);
    CHECK(onDesktop.remedy == Remedy::chooseIdentifier);
}

TEST_CASE("a profile that cannot be used is refused, and can be gone without") {
    const Scene scene;
    const auto file =
        writeFile(scene.home / ".config/korvane/profiles/org.example.mail.json", "no profile");
    auto request = scene.appRequest();

    const auto refusal = refusalOf(scene, [&] { scene.plan(request); });
    request.useProfile = UseProfile::no;

    CHECK(refusal.kind == Kind::unusableProfile);
    CHECK(refusal.subject == file);
    CHECK(refusal.remedy == Remedy::goWithoutProfile);
    CHECK_FALSE(scene.make(request).profile);
}

TEST_CASE("a runner or an icon that cannot be used leaves everything as it was") {
    const Scene scene;
    auto noRunner = scene.request();
    noRunner.runner = scene.tmp / "none";
    auto noPicture = scene.request();
    noPicture.icon = writeFile(scene.tmp / "icon.png", "no picture");

    const auto runner = refusalOf(scene, [&] { scene.make(noRunner); });
    const auto icon = refusalOf(scene, [&] { scene.make(noPicture); });

    CHECK(runner.kind == Kind::unusableRunner);
    CHECK(runner.subject == scene.tmp / "none");
    CHECK(icon.kind == Kind::unusableIcon);
    CHECK(icon.subject == scene.tmp / "icon.png");
}

TEST_CASE("replacing tells what goes and keeps the data of what was replaced") {
    const Scene scene;
    const auto old = scene.instance();
    const auto data = writeFile(scene.homeOf() + "/data", "kept");
    auto request = scene.request();
    request.existing = Existing::replace;
    request.commandPath = "/bin/false";
    request.home = "~/other";

    const auto plan = scene.plan(request);
    REQUIRE(plan.replaced);
    CHECK(plan.replaced->bundleURL == old.bundleURL);
    CHECK(plan.replacedSize == sizeOfTree(old.bundleURL));
    CHECK(plan.replacedSize.items > 5);
    CHECK(scene.configOf(scene.bundle()).commandPath == "/bin/sh");
    const auto created = perform(plan, scene.user, scene.environment);

    REQUIRE(created.replaced);
    CHECK(created.replaced->config.instanceHome == "~/KorvaneInstances/Work");
    CHECK(scene.configOf(scene.bundle()).commandPath == "/bin/false");
    CHECK(readFile(data) == "kept");
    CHECK(namesIn(scene.home / "Applications") == Strings{"Work.app"});
}

TEST_CASE("what came to stand in the way since the plan was made is refused") {
    const Scene scene;
    const auto plan = scene.plan(scene.request());
    const auto refused = [&] {
        return refusalOf(scene, [&] { perform(plan, scene.user, scene.environment); });
    };

    auto otherHome = scene.request("Other");
    otherHome.home = "~/KorvaneInstances/Work";
    const auto other = scene.make(otherHome).record;
    CHECK(refused().kind == Kind::homeTaken);
    scene.store(other, [&] {
        auto config = other.config;
        config.instanceHome = "~/elsewhere";
        return config;
    }());
    makeFolder(scene.bundle());
    CHECK(refused().kind == Kind::notAnInstance);
}

TEST_CASE("an instance that changed or went since it was to be replaced is not replaced") {
    const Scene scene;
    const auto old = scene.instance();
    auto request = scene.request();
    request.existing = Existing::replace;
    const auto plan = scene.plan(request);
    const auto refused = [&] {
        return refusalOf(scene, [&] { perform(plan, scene.user, scene.environment); });
    };

    auto config = old.config;
    config.commandArgs = {"new"};
    scene.store(old, config);
    const auto changed = refused();
    ambrel::InstanceRegistry(scene.user).remove(old, ambrel::UserData::keep);
    const auto gone = refused();

    for (const auto& refusal : {changed, gone}) {
        CHECK(refusal.kind == Kind::changedMeanwhile);
        CHECK(refusal.subject == scene.bundle());
        CHECK(refusal.remedy == Remedy::lookAgain);
    }
}

TEST_CASE("an instance that comes to the place while another is built stays there") {
    const Replacing scene;
    auto config = scene.old.config;
    config.commandArgs = {"new"};

    const auto refusal = scene.refusalWhile([&] { scene.store(scene.old, config); });

    CHECK(refusal.kind == Kind::changedMeanwhile);
    CHECK(refusal.subject == scene.bundle());
    CHECK(scene.configOf(scene.bundle()).encode() == config.encode());
    CHECK(namesIn(scene.home / "Applications") == Strings{"Work.app"});
}

TEST_CASE("an instance that runs is not replaced") {
    const Scene scene;
    scene.instance();
    auto request = scene.request();
    request.existing = Existing::replace;
    const auto plan = scene.plan(request);
    const Waiting process({{"HOME", scene.homeOf()}});

    for (const auto& refusal :
         {refusalOf(scene, [&] { scene.plan(request); }),
          refusalOf(scene, [&] { perform(plan, scene.user, scene.environment); })}) {
        CHECK(refusal.kind == Kind::instanceRuns);
        CHECK(refusal.remedy == Remedy::stopFirst);
    }
    request.existing = Existing::refuse;
    CHECK(refusalOf(scene, [&] { scene.plan(request); }).kind == Kind::instanceExists);
}

TEST_CASE("an instance that is started while its replacement is built is not replaced") {
    const Replacing scene;
    std::optional<Waiting> process;

    const auto refusal = scene.refusalWhile([&] {
        process.emplace(Waiting::Variables{{"HOME", scene.homeOf()}});
    });

    CHECK(refusal.kind == Kind::instanceRuns);
    CHECK(namesIn(scene.home / "Applications") == Strings{"Work.app"});
}

TEST_CASE("no folder of the user's own becomes a home") {
    const Scene scene;
    makeFolder(scene.home / "Documents");
    makeFolder(scene.home / "all/papers");
    writeFile(scene.home / ".config/user-dirs.dirs", "XDG_DESKTOP_DIR=\"$HOME/all/papers\"\n");
    makeLink(scene.tmp / "way", scene.home / "Documents");
    auto request = scene.request();
    for (const Path home : {"~/Documents", "~/Downloads", "~/all/papers", "~/all"}) {
        CAPTURE(home);
        request.home = home;
        const auto refusal = refusalOf(scene, [&] { scene.plan(request); });
        CHECK(refusal.kind == Refusal::Kind::homeIsUsers);
        CHECK(refusal.remedy == Remedy::chooseHome);
    }
    request.home = scene.tmp / "way";
    CHECK(refusalOf(scene, [&] { scene.plan(request); }).kind == Refusal::Kind::homeIsUsers);
    for (const Path home : {"~", "~/Documents/Work", "~/all/other"}) {
        CAPTURE(home);
        request.home = home;
        CHECK_NOTHROW(scene.plan(request));
    }
}

} // namespace korvane::test
