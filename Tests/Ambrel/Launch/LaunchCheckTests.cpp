#include "Ambrel/Launch/LaunchCheck.h"

#include "Support/Builders.h"
#include "Support/Environment.h"
#include "Support/Expect.h"

using namespace ambrel;
using namespace korvane::test;

namespace {

using Kind = LaunchObstacle::Kind;
using Finding = std::optional<LaunchObstacle>;

Finding obstacleTo(const InstanceConfig& config, const UserPlaces& user = nobody()) {
    return findLaunchObstacle(ResolvedInstance::of(config, user), {.codesign = "/nonexistent"});
}

InstanceConfig configOf(ShortcutKind kind) {
    auto config = smallestConfig();
    config.kind = kind;
    return config;
}

} // namespace

TEST_CASE("a web instance can be opened whatever its address is") {
    auto config = configOf(ShortcutKind::web);
    CHECK_FALSE(obstacleTo(config).has_value());
    config.url = "https://";
    CHECK_FALSE(obstacleTo(config).has_value());
}

TEST_CASE("a file can be opened when it is given and there, or is an address") {
    const TempDir tmp;
    const UserHome user(tmp);
    writeFile(user / "letter");
    auto config = configOf(ShortcutKind::file);
    for (const auto& path : {std::optional<Path>(), std::optional<Path>("")}) {
        config.openPath = path;
        CHECK(obstacleTo(config) == Finding({Kind::noDocument, ""}));
    }

    config.openPath = "~/letter";
    CHECK_FALSE(obstacleTo(config, user.places()).has_value());
    config.openPath = "https://example.org/";
    CHECK_FALSE(obstacleTo(config, user.places()).has_value());
    config.openPath = "~/gone";
    CHECK(obstacleTo(config, user.places()) == Finding({Kind::documentMissing, user / "gone"}));
}

TEST_CASE("a command can be run when its program can, in a folder that is there") {
    const TempDir tmp;
    auto config = configOf(ShortcutKind::command);
    CHECK(obstacleTo(config) == Finding({Kind::noCommand, ""}));

    config.commandPath = tmp / "text";
    writeFile(tmp / "text");
    CHECK(obstacleTo(config) == Finding({Kind::commandNotRunnable, tmp / "text"}));
    config.commandPath = "/bin/true";
    config.workingDirectory = "";
    CHECK_FALSE(obstacleTo(config).has_value());
    config.workingDirectory = tmp / "gone";
    CHECK(obstacleTo(config) == Finding({Kind::folderMissing, tmp / "gone"}));
}

TEST_CASE("an application can be run when it is read, clonable and its program executable") {
    const TempDir tmp;
    auto config = configOf(ShortcutKind::app);
    config.targetAppPath = tmp / "App.app";
    CHECK(obstacleTo(config) == Finding({Kind::badBundle, tmp / "App.app"}));

    AppBundleBuilder(tmp / "App.app").identifier("org.example.app").write();
    CHECK(obstacleTo(config) ==
          Finding({Kind::programNotRunnable, tmp / "App.app/Contents/MacOS/App"}));
    AppBundleBuilder(tmp / "App.app")
        .identifier("org.example.app")
        .executable("App", "true")
        .write();
    CHECK_FALSE(obstacleTo(config).has_value());
    config.strategy = Strategy::unsupported;
    CHECK(obstacleTo(config) == Finding({Kind::unsupported, "org.example.app"}));
}

TEST_CASE("a check changes nothing") {
    const TempDir tmp;
    auto config = commandConfig(tmp / "home", "/bin/true");
    config.targetAppPath = tmp / "App.app";
    for (const auto kind :
         {ShortcutKind::app, ShortcutKind::web, ShortcutKind::file, ShortcutKind::command}) {
        config.kind = kind;
        obstacleTo(config);
        CHECK(namesIn(tmp.path()).empty());
    }
}

TEST_CASE("a wrapper needs a runner that can be run") {
    const TempDir tmp;
    const auto runner = tmp / "Work.app/Contents/MacOS/runner";
    CHECK(findRunnerObstacle(tmp / "Work.app") == Finding({Kind::noRunner, runner}));
    writeScript(runner, "true");
    CHECK_FALSE(findRunnerObstacle(tmp / "Work.app").has_value());
}
