#include "Ambrel/Launch/InstanceLauncher.h"
#include "Support/Builders.h"
#include "Support/Environment.h"
#include "Support/Expect.h"
#include "Support/Launch.h"
#include "Support/Report.h"

using namespace ambrel;
using namespace korvane::test;

namespace {

/// An application whose executable is the probe, with a user and an instance home.
struct Stage {
    Stage() : user(tmp) {
        AppBundleBuilder(tmp / "App.app").identifier("org.example.app").write();
        copyProgram(KORVANE_TEST_PROBE, tmp / "App.app/Contents/MacOS/App");
    }

    InstanceConfig config() const {
        auto result = smallestConfig();
        result.instanceHome = tmp / "instance";
        result.targetAppPath = tmp / "App.app";
        result.extraArgs = {"report", tmp / "report"};
        return result;
    }

    /// The name that a program started with `config` sees.
    std::string nameSeen(const InstanceConfig& config) const {
        return seen(start(config, user.places(), tools));
    }
    std::string nameSeenWith(const std::string& name) const {
        auto named = config();
        named.infoPlistOverrides[processNameKey] = name;
        return nameSeen(named);
    }
    std::string seen(ChildProcess child) const {
        child.waitUntilExit();
        CHECK(child.terminationStatus() == 0);
        return Report(tmp / "report").lines("argv0").at(0);
    }

    TempDir tmp;
    UserHome user;
    SystemTools tools{.codesign = "/nonexistent"};
    Path executable = tmp / "App.app/Contents/MacOS/App";
};

} // namespace

TEST_CASE("an app shortcut gives the configured process name and runs the same executable") {
    const Stage stage;

    CHECK(stage.nameSeenWith("org.example.Work") == "org.example.Work");
    CHECK(stage.nameSeenWith("Büro 2") == "Büro 2");
    CHECK(stage.nameSeenWith("-x") == "-x");
    CHECK(stage.nameSeen(stage.config()) == stage.executable);
}

TEST_CASE("a process name that is empty or holds a slash or a control character is passed over") {
    const Stage stage;
    for (const std::string& name :
         {std::string(), std::string("/bin/x"), std::string("a/b"), std::string("a\nb"),
          std::string("a\x7f"), std::string("a\0b", 3), std::string("a\xc2\x85")}) {
        CAPTURE(name);
        CHECK(stage.nameSeenWith(name) == stage.executable);
        CHECK_FALSE(InstanceLauncher::isUsableProcessName(name));
    }
    CHECK_FALSE(InstanceLauncher::isUsableProcessName("a\xff"));
    CHECK(InstanceLauncher::isUsableProcessName("a b\xc2\xa0"));
}

TEST_CASE("the operations called directly give the process name that they are told") {
    const Stage stage;
    const auto home = stage.tmp / "instance";
    const Strings arguments{"report", stage.tmp / "report"};
    const auto app = AppBundle::read(stage.tmp / "App.app", stage.tools);
    REQUIRE(app.has_value());

    CHECK(stage.seen(InstanceLauncher::launch(*app, home, Strategy::homeOverride, arguments, {},
                                              stage.user.places(), processEnvironment(),
                                              "direct")) == "direct");
    CHECK(stage.seen(InstanceLauncher::launch(
              stage.tmp / "App.app", home, Strategy::homeOverride, arguments, {},
              stage.user.places(), processEnvironment(), stage.tools, "by/path")) == "by/path");
    CHECK(stage.seen(InstanceLauncher::launch(
              stage.tmp / "App.app", home, Strategy::homeOverride, arguments, {},
              stage.user.places(), processEnvironment(), stage.tools)) == stage.executable);
}

TEST_CASE("a command and a document take no process name from the configuration") {
    const Stage stage;
    auto command =
        commandConfig(stage.tmp / "home", KORVANE_TEST_PROBE, {"report", stage.tmp / "report"});
    command.infoPlistOverrides[processNameKey] = "named";
    CHECK(stage.nameSeen(command) == std::string(KORVANE_TEST_PROBE));

    auto file = smallestConfig();
    file.kind = ShortcutKind::file;
    file.openPath = stage.tmp / "x";
    file.infoPlistOverrides[processNameKey] = "named";
    auto opened = start(file, stage.user.places(), {.open = "/bin/true"});
    opened.waitUntilExit();
    CHECK_FALSE(opened.setup().processName.has_value());
}
