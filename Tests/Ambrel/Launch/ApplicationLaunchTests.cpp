#include "Ambrel/Launch/InstanceLauncher.h"

#include "Launching.h"

#include "Ambrel/Platform/FileSystem.h"
#include "Support/Builders.h"
#include "Support/Environment.h"
#include "Support/Report.h"

#include <sys/stat.h>
#include <unistd.h>

using namespace ambrel;
using namespace korvane::test;
using Variables = std::map<std::string, std::string>;

namespace {

/// An application whose executable is the probe, with a user and an instance home.
struct Stage {
    Stage() : user(tmp), home(tmp / "instance") {
        app.url = AppBundleBuilder(tmp / "App.app").identifier("org.example.app").write();
        app.bundleId = "org.example.app";
        app.executableName = "probe";
        copyProgram(probe, app.executableURL());
    }

    /// Launches the application and returns what it saw.
    Report report(const StringMap& environment = {}, const Strings& arguments = {},
                  Strategy strategy = Strategy::homeOverride) const {
        Strings all{"report", tmp / "report"};
        all.insert(all.end(), arguments.begin(), arguments.end());
        const int status = statusOf(InstanceLauncher::launch(app, home, strategy, all, environment,
                                                             user.places(), processEnvironment()));
        CHECK(status == 0);
        return Report(tmp / "report");
    }
    Variables environment(const StringMap& own = {}) const { return report(own).environment(); }

    InstanceConfig config() const {
        auto result = smallestConfig();
        result.instanceHome = home;
        result.targetAppPath = app.url;
        result.extraArgs = {"report", tmp / "report"};
        return result;
    }

    TempDir tmp;
    UserHome user;
    Path home;
    AppBundle app;
};

} // namespace

TEST_CASE("an application path that begins with a tilde is not expanded and is a bad bundle") {
    const TempDir tmp;
    const UserHome user(tmp);
    AppBundleBuilder(user / "Applications/X.app").identifier("x").write();
    auto config = smallestConfig();
    config.targetAppPath = "~/Applications/X.app";

    const auto error = launchErrorOf(config);

    CHECK(error.kind == LaunchError::Kind::badBundle);
    CHECK(error.description() == "Not a readable .app bundle: ~/Applications/X.app");
    CHECK(error.subject == "~/Applications/X.app");
}

TEST_CASE("the application's environment has both homes and every inherited variable") {
    const ScopedVariable kept("KORVANE_TEST_KEPT", "kept");
    const ScopedVariable replaced("KORVANE_TEST_REPLACED", "old");
    const Stage stage;

    const auto seen = stage.environment({{"KORVANE_TEST_REPLACED", "new"}});

    CHECK(seen.at("HOME") == stage.home);
    CHECK(seen.at("CFFIXED_USER_HOME") == stage.home);
    CHECK(seen.at("KORVANE_TEST_KEPT") == "kept");
    CHECK(seen.at("KORVANE_TEST_REPLACED") == "new");
    CHECK(seen.at("PATH") == ::getenv("PATH"));
}

TEST_CASE("an environment that sets HOME wins while CFFIXED_USER_HOME stays the instance home") {
    const Stage stage;

    const auto seen = stage.environment({{"HOME", "/tmp/h"}});

    CHECK(seen.at("HOME") == "/tmp/h");
    CHECK(seen.at("CFFIXED_USER_HOME") == stage.home);
}

TEST_CASE("a second launch of one instance appends to its log") {
    const TempDir tmp;
    AppBundle app{tmp / "A.app", "a", "run"};
    writeScript(app.executableURL(), "echo \"$1\"");

    for (const auto* word : {"first", "second"}) {
        statusOf(InstanceLauncher::launch(app, tmp / "h", Strategy::homeOverride, {word}, {},
                                          nobody(), processEnvironment()));
    }

    CHECK(readFile(logOf(tmp / "h")) == "first\nsecond\n");
    CHECK(InstanceLauncher::instanceLogName == "korvane-instance.log");
}

TEST_CASE("an unsupported strategy leaves an empty home with an empty log behind") {
    const Stage stage;
    makeFolder(stage.user / "Library/Keychains");

    const auto error =
        expectThrow<LaunchError>([&] { stage.report({}, {}, Strategy::unsupported); });

    CHECK(error.kind == LaunchError::Kind::unsupported);
    CHECK(error.description() == "App not clonable: org.example.app");
    CHECK(error.subject == "org.example.app");
    CHECK(namesIn(stage.home) == Strings{"korvane-instance.log"});
    CHECK(readFile(logOf(stage.home)).empty());
    CHECK_FALSE(isThere(stage.tmp / "report"));
}

TEST_CASE("a real keychain folder with entries in the instance home is left and not linked") {
    const Stage stage;
    makeFolder(stage.user / "Library/Keychains");
    writeFile(stage.home + "/Library/Keychains/own.db", "own");

    stage.report();

    CHECK(isRealFolder(stage.home + "/Library/Keychains"));
    CHECK(readFile(stage.home + "/Library/Keychains/own.db") == "own");
}

TEST_CASE("without keychains of the user no link is made") {
    const Stage stage;

    stage.report();

    CHECK_FALSE(isThere(stage.home + "/Library"));
}

TEST_CASE("the instance's keychains are a link to the user's own") {
    const Stage stage;
    writeFile(stage.user / "Library/Keychains/login.db", "keys");

    stage.report();

    CHECK(linkText(stage.home + "/Library/Keychains") == stage.user / "Library/Keychains");
    makeFolder(stage.tmp / "second");
    InstanceLauncher::ensureKeychainAccess((stage.tmp / "second") + "/", stage.user.places());
    CHECK(linkText(stage.tmp / "second/Library/Keychains") == stage.user / "Library/Keychains");
}

TEST_CASE("the three supported strategies launch alike") {
    const Stage stage;
    for (const auto strategy :
         {Strategy::homeOverride, Strategy::containerRedirect, Strategy::wrapperIdentity}) {
        const auto seen = stage.report({{"A", "1"}}, {"x"}, strategy);
        CHECK(seen.environment().at("HOME") == stage.home);
        CHECK(seen.lines("arg") == Strings{"x"});
    }
}

TEST_CASE("an application's arguments and environment are used exactly as given") {
    const Stage stage;

    const auto seen = stage.report({{"K", "{{instanceHome}} ~/x"}}, {"{{instanceHome}}", "~", ""});

    CHECK(seen.lines("arg") == Strings{"{{instanceHome}}", "~", ""});
    CHECK(seen.environment().at("K") == "{{instanceHome}} ~/x");
    CHECK(seen.lines("argv0") == Strings{stage.app.executableURL()});
}

TEST_CASE("the base directories lie below the instance home, inherited ones do not lead back") {
    const ScopedVariable config("XDG_CONFIG_HOME", "/the/user/.config");
    const ScopedVariable cache("XDG_CACHE_HOME", "/the/user/.cache");
    const ScopedVariable runtime("XDG_RUNTIME_DIR", "/run/user/1");
    const Stage stage;

    const auto seen = stage.environment();

    CHECK(seen.at("XDG_CONFIG_HOME") == stage.home + "/.config");
    CHECK(seen.at("XDG_DATA_HOME") == stage.home + "/.local/share");
    CHECK(seen.at("XDG_STATE_HOME") == stage.home + "/.local/state");
    CHECK(seen.at("XDG_CACHE_HOME") == stage.home + "/.cache");
    CHECK(seen.at("XDG_RUNTIME_DIR") == "/run/user/1");
    CHECK(isRealFolder(stage.home + "/.cache"));
}

TEST_CASE("the configuration's environment has the last word over the base directories") {
    const Stage stage;

    const auto seen = stage.environment({{"XDG_CONFIG_HOME", "/mine"}, {"XAUTHORITY", "/auth"}});

    CHECK(seen.at("XDG_CONFIG_HOME") == "/mine");
    CHECK(seen.at("XAUTHORITY") == "/auth");
    CHECK(seen.at("XDG_DATA_HOME") == stage.home + "/.local/share");
}

TEST_CASE("the authority file is named only where it is unset and the user has one") {
    const Stage stage;
    const ScopedVariable unset("XAUTHORITY", std::nullopt);
    CHECK(stage.environment().count("XAUTHORITY") == 0);
    writeFile(stage.user / ".Xauthority");
    CHECK(stage.environment().at("XAUTHORITY") == stage.user / ".Xauthority");
    const ScopedVariable set("XAUTHORITY", "/run/user/1/auth");
    CHECK(stage.environment().at("XAUTHORITY") == "/run/user/1/auth");
}

TEST_CASE("nothing else that is inherited changes for an application") {
    const Stage stage;
    const auto seen = stage.environment();
    auto expected = Variables(processEnvironment());
    for (const auto* name : {"HOME", "CFFIXED_USER_HOME"}) expected[name] = stage.home;
    expected["XDG_CONFIG_HOME"] = stage.home + "/.config";
    expected["XDG_DATA_HOME"] = stage.home + "/.local/share";
    expected["XDG_STATE_HOME"] = stage.home + "/.local/state";
    expected["XDG_CACHE_HOME"] = stage.home + "/.cache";
    CHECK(seen == expected);
}

TEST_CASE("an instance home that cannot be made fails with the system's error") {
    const Stage stage;
    writeFile(stage.tmp / "file");
    for (const auto& home : {stage.tmp / "file/h", stage.tmp / "file", std::string()}) {
        CAPTURE(home);
        expectThrow<FileError>([&] {
            InstanceLauncher::launch(stage.app, home, Strategy::homeOverride, {"report", "-"}, {},
                                     stage.user.places(), processEnvironment());
        });
    }
}

TEST_CASE("an application without its executable fails with the platform's error") {
    Stage stage;
    stage.app.executableName = "missing";

    const auto error = expectThrow<ChildProcessError>([&] { stage.report(); });

    CHECK(error.fault == ChildProcessError::Fault::executable);
    CHECK(error.path == stage.app.url + "/Contents/MacOS/missing");
}

TEST_CASE("a location without a readable bundle is a bad bundle and makes nothing") {
    const TempDir tmp;
    const auto error = expectThrow<LaunchError>([&] {
        InstanceLauncher::launch(tmp / "X.app", tmp / "h", Strategy::homeOverride, {}, {}, nobody(),
                                 processEnvironment(), {.codesign = "/nonexistent"});
    });
    CHECK(error.kind == LaunchError::Kind::badBundle);
    CHECK(error.description() == "Not a readable .app bundle: " + (tmp / "X.app"));
    CHECK(namesIn(tmp.path()).empty());
}

TEST_CASE("an app shortcut shares the user's folders before its bundle is examined") {
    const Stage stage;
    makeFolder(stage.user / "Downloads");
    auto config = stage.config();
    config.targetAppPath = stage.tmp / "missing.app";

    CHECK(launchErrorOf(config, stage.user.places()).kind == LaunchError::Kind::badBundle);
    CHECK(linkText(stage.home + "/Downloads") == stage.user / "Downloads");
    CHECK(namesIn(stage.home) == Strings{"Downloads"});
}

TEST_CASE("an app shortcut that does not share leaves the instance's folders alone") {
    const Stage stage;
    makeFolder(stage.user / "Downloads");
    auto config = stage.config();
    config.shareUserFolders = false;
    config.targetAppPath = stage.app.url;
    copyProgram(probe, stage.app.url + "/Contents/MacOS/App");

    CHECK(launch(config, stage.user.places(), {.codesign = "/nonexistent"}) == 0);

    CHECK_FALSE(isThere(stage.home + "/Downloads"));
}

TEST_CASE("an app shortcut runs the bundle's main executable in the resolved home") {
    const Stage stage;
    copyProgram(probe, stage.app.url + "/Contents/MacOS/App");
    auto config = stage.config();
    config.instanceHome = "~/Instances/One";
    config.extraArgs.emplace_back("--data={{instanceHome}}/d");
    config.environment = {{"DATA", "{{instanceHome}}"}};

    CHECK(launch(config, stage.user.places(), {.codesign = "/nonexistent"}) == 0);

    const Report seen(stage.tmp / "report");
    const auto home = stage.user / "Instances/One";
    CHECK(seen.lines("argv0") == Strings{stage.app.url + "/Contents/MacOS/App"});
    CHECK(seen.lines("arg") == Strings{"--data=" + home + "/d"});
    CHECK(seen.environment().at("HOME") == home);
    CHECK(seen.environment().at("DATA") == home);
}

TEST_CASE("an app shortcut whose home is the user's own leaves the user's folders alone") {
    const Stage stage;
    copyProgram(probe, stage.app.url + "/Contents/MacOS/App");
    makeFolder(stage.user / "Downloads"); // empty: a link would replace it
    makeFolder(stage.user / "Library/Keychains");
    auto config = stage.config();
    config.instanceHome = "~";

    CHECK(launch(config, stage.user.places(), {.codesign = "/nonexistent"}) == 0);

    CHECK(isRealFolder(stage.user / "Downloads"));
    CHECK(isRealFolder(stage.user / "Library/Keychains"));
}

TEST_CASE("an empty instance home writes nothing into the folder that the runner started in") {
    const Stage stage;
    makeFolder(stage.user / "Downloads");
    makeFolder(stage.tmp / "here/Downloads/private");
    const WorkingDirectory inside(stage.tmp / "here");
    auto config = stage.config();
    config.instanceHome = "";
    copyProgram(probe, stage.app.url + "/Contents/MacOS/App");

    expectThrow<FileError>(
        [&] { launch(config, stage.user.places(), {.codesign = "/nonexistent"}); });

    CHECK(InstanceLauncher::migrateSharedUserFolders("", stage.user.places()).empty());
    CHECK_FALSE(InstanceLauncher::instanceLogHandle(""));
    CHECK(fileSystem::list(".") == Strings{"Downloads"});
    CHECK(isRealFolder("Downloads/private"));
}

TEST_CASE("the instance log is opened for appending and null where it cannot be") {
    const TempDir tmp;
    writeFile(logOf(tmp / "h"), "before\n");
    {
        const auto first = InstanceLauncher::instanceLogHandle(tmp / "h");
        const auto second = InstanceLauncher::instanceLogHandle((tmp / "h") + "/");
        REQUIRE(first);
        REQUIRE(second);
        CHECK(::write(first->get(), "one\n", 4) == 4);
        CHECK(::write(second->get(), "two\n", 4) == 4);
        CHECK(::write(first->get(), "end\n", 4) == 4);
    }
    CHECK(readFile(logOf(tmp / "h")) == "before\none\ntwo\nend\n");
    CHECK_FALSE(InstanceLauncher::instanceLogHandle(tmp / "missing"));
    makeFolder(logOf(tmp / "folder"));
    CHECK_FALSE(InstanceLauncher::instanceLogHandle(tmp / "folder"));
}

TEST_CASE("a pipe in the place of the log does not hold up the start") {
    const TempDir tmp;
    makeFolder(tmp / "h");
    REQUIRE(::mkfifo(logOf(tmp / "h").c_str(), 0600) == 0);

    CHECK_FALSE(InstanceLauncher::instanceLogHandle(tmp / "h"));
    CHECK(launch(commandConfig(tmp / "h", probe, {"report", tmp / "report"})) == 0);
}

TEST_CASE("a refusal is one line whatever the path of the application holds") {
    const TempDir tmp;
    auto config = smallestConfig();
    config.instanceHome = tmp / "h";
    config.shareUserFolders = false;
    config.targetAppPath = "/x\nrunner: all is well\x1b[2J.app";

    const auto error = launchErrorOf(config);

    CHECK(error.description() ==
          "Not a readable .app bundle: /x\\nrunner: all is well\\u{1B}[2J.app");
    CHECK(error.subject == config.targetAppPath);
}

TEST_CASE("an environment variable whose name would set another one is refused") {
    const Stage stage;
    for (const std::string name : {"HOME=/evil", ""}) {
        const auto error = expectThrow<ChildProcessError>([&] { stage.report({{name, "x"}}); });
        CHECK(error.fault == ChildProcessError::Fault::arguments);
        auto command = commandConfig(stage.home, "/bin/true");
        command.environment = {{name, "x"}};
        expectThrow<ChildProcessError>([&] { start(command); });
    }
}

TEST_CASE("an inherited environment variable without a name stops no start and is handed on") {
    const Stage stage;
    auto command = commandConfig(stage.home, "/bin/sh", {"-c", "exit 4"});
    command.environment = {{"OWN", "x"}};
    const Environment inherited{{"", "nameless"}, {"PATH", "/usr/bin:/bin"}};

    auto app = InstanceLauncher::launch(stage.app, stage.home, Strategy::homeOverride,
                                        {"report", stage.tmp / "report"}, {}, stage.user.places(),
                                        inherited);
    auto run = InstanceLauncher::launch(ResolvedInstance::of(command, stage.user.places()),
                                        stage.user.places(), inherited);

    CHECK(statusOf(std::move(app)) == 0);
    CHECK(statusOf(std::move(run)) == 4);
    CHECK(Report(stage.tmp / "report").environment().at("") == "nameless");
}

TEST_CASE("without an instance home no keychains are linked into the current folder") {
    const Stage stage;
    makeFolder(stage.user / "Library/Keychains");
    makeFolder(stage.tmp / "here");
    const WorkingDirectory inside(stage.tmp / "here");

    InstanceLauncher::ensureKeychainAccess("", stage.user.places());

    CHECK(namesIn(stage.tmp / "here").empty());
}

TEST_CASE("an application's output and errors go to the instance log") {
    const TempDir tmp;
    const AppBundle app{tmp / "A.app", "a", "run"};
    writeScript(app.executableURL(), "echo out; echo err >&2");

    statusOf(InstanceLauncher::launch(app, tmp / "h", Strategy::homeOverride, {}, {}, nobody(),
                                      processEnvironment()));

    CHECK(readFile(logOf(tmp / "h")) == "out\nerr\n");
}

TEST_CASE("an app shortcut shares the user's folders even where its strategy refuses the start") {
    const Stage stage;
    makeFolder(stage.user / "Downloads");
    auto config = stage.config();
    config.strategy = Strategy::unsupported;

    CHECK(launchErrorOf(config, stage.user.places()).kind == LaunchError::Kind::unsupported);
    CHECK(linkText(stage.home + "/Downloads") == stage.user / "Downloads");
}

TEST_CASE("an environment of the configuration that no program can get is refused") {
    const Stage stage;
    expectThrow<ChildProcessError>([&] { stage.report({{"K", std::string("a\0b", 3)}}); });
}
