#include "Ambrel/Launch/InstanceLauncher.h"

#include "Ambrel/Platform/FileSystem.h"
#include "Support/Builders.h"
#include "Support/Environment.h"
#include "Support/Expect.h"
#include "Support/Launch.h"
#include "Support/Report.h"

#include <sys/stat.h>
#include <unistd.h>

using namespace ambrel;
using namespace korvane::test;
using Variables = std::map<std::string, std::string>;

namespace {

const Path probe = KORVANE_TEST_PROBE;

int statusOf(ChildProcess child) {
    child.waitUntilExit();
    return child.terminationStatus();
}

int launch(const InstanceConfig& config, const UserPlaces& user = nobody(),
           const SystemTools& tools = {}) {
    return statusOf(start(config, user, tools));
}

LaunchError launchErrorOf(const InstanceConfig& config, const UserPlaces& user = nobody()) {
    return expectThrow<LaunchError>(
        [&] { start(config, user, {.codesign = "/nonexistent/codesign"}); });
}

Path logOf(const Path& home) { return home + "/korvane-instance.log"; }

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

InstanceConfig fileConfig(const std::optional<std::string>& openPath) {
    auto config = smallestConfig();
    config.kind = ShortcutKind::file;
    config.openPath = openPath;
    return config;
}

} // namespace

TEST_CASE("a file shortcut runs the opener with the expanded path as its single argument") {
    const TempDir tmp;
    const UserHome user(tmp);
    const auto opener = writeScript(tmp / "open", R"(printf '%s\n' "$#" "$@" > "$0.arguments")");
    auto config = fileConfig("~/Documents/report.pdf");
    config.instanceHome = tmp / "home";

    auto child = start(config, user.places(), {.open = opener});
    CHECK(child.setup().arguments == Strings{user / "Documents/report.pdf"});
    CHECK_FALSE(child.setup().environment.has_value());
    CHECK_FALSE(child.setup().currentDirectory.has_value());
    CHECK(statusOf(std::move(child)) == 0);

    CHECK(readFile(tmp / "open.arguments") == "1\n" + (user / "Documents/report.pdf") + "\n");
    CHECK_FALSE(isThere(tmp / "home"));
}

TEST_CASE("a file shortcut with an empty path fails as unsupported with its reason") {
    for (const auto& path : {std::optional<std::string>(""), std::optional<std::string>()}) {
        const auto error = launchErrorOf(fileConfig(path));
        CHECK(error.kind == LaunchError::Kind::unsupported);
        CHECK(error.subject == "file shortcut has no target path");
        CHECK(error.description() == "App not clonable: file shortcut has no target path");
    }
}

TEST_CASE("a file shortcut hands a hostile path on as one argument and never to a shell") {
    const TempDir tmp;
    const auto opener = writeScript(tmp / "open", R"(printf '%s' "$1" > "$0.argument")");
    for (const std::string path : {"-n", "$(touch /x)", "a b;c", "--", "\xff", "https://x/?a&b"}) {
        CHECK(launch(fileConfig(path), nobody(), {.open = opener}) == 0);
        CHECK(readFile(tmp / "open.argument") == path);
    }
}

TEST_CASE("the opener inherits the environment and its missing is the platform's error") {
    const TempDir tmp;
    const ScopedVariable variable("KORVANE_TEST_MARK", "seen");
    auto config = fileConfig("x");
    config.environment = {{"KORVANE_TEST_OWN", "never"}};
    const auto opener = writeScript(
        tmp / "open", R"(printf '%s' "$KORVANE_TEST_MARK$KORVANE_TEST_OWN" > "$0.env")");
    CHECK(launch(config, nobody(), {.open = opener}) == 0);
    CHECK(readFile(tmp / "open.env") == "seen");

    const auto error =
        expectThrow<ChildProcessError>([&] { start(config, nobody(), {.open = tmp / "missing"}); });

    CHECK(error.path == tmp / "missing");
}

TEST_CASE("a command's second argument has the resolved home in place of the placeholder") {
    const TempDir tmp;
    const UserHome user(tmp);
    auto config = commandConfig(
        "~/h", probe, {"report", tmp / "report", "--profile", "{{instanceHome}}/p", "~/x", ""});

    CHECK(launch(config, user.places()) == 0);

    CHECK(Report(tmp / "report").lines("arg") == Strings{"--profile", user / "h/p", "~/x", ""});
}

TEST_CASE("a command with an empty working directory runs in the current one") {
    const TempDir tmp;
    const WorkingDirectory inside(tmp.path());
    auto config = commandConfig(tmp / "h", probe, {"report", tmp / "report"});
    for (const auto& folder : {std::optional<std::string>(""), std::optional<std::string>()}) {
        config.workingDirectory = folder;
        CHECK(launch(config) == 0);
        CHECK(Report(tmp / "report").lines("cwd") == Strings{tmp.path()});
    }
}

TEST_CASE("a command's home is the real one unless its environment sets another") {
    const TempDir tmp;
    const ScopedVariable home("HOME", "/the/real/home");
    const ScopedVariable cache("XDG_CACHE_HOME", std::nullopt);
    auto config = commandConfig(tmp / "h", probe, {"report", tmp / "report"});
    CHECK(launch(config) == 0);
    auto seen = Report(tmp / "report").environment();
    CHECK(seen.at("HOME") == "/the/real/home");
    CHECK(seen.at("CFFIXED_USER_HOME") == "/nonexistent/korvane-test-home");
    CHECK(seen.count("XDG_CACHE_HOME") == 0);
    CHECK(namesIn(tmp / "h") == Strings{"korvane-instance.log"});

    config.environment = {{"HOME", "{{instanceHome}}"}, {"A{{instanceHome}}", "x"}};
    CHECK(launch(config) == 0);

    seen = Report(tmp / "report").environment();
    CHECK(seen.at("HOME") == tmp / "h");
    CHECK(seen.at("A{{instanceHome}}") == "x");
}

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

TEST_CASE("a web configuration is refused by the launcher") {
    const TempDir tmp;
    auto config = smallestConfig();
    config.kind = ShortcutKind::web;
    config.instanceHome = tmp / "h";
    config.menuBarIcon = true;

    const auto error = launchErrorOf(config);

    CHECK(error.kind == LaunchError::Kind::unsupported);
    CHECK(error.subject == "web shortcuts run in the runner's web host");
    CHECK(error.description() == "App not clonable: web shortcuts run in the runner's web host");
    CHECK(namesIn(tmp.path()).empty());
}

TEST_CASE("a command without an executable is refused before anything is written") {
    const TempDir tmp;
    auto config = commandConfig(tmp / "h", "");
    for (const auto& path : {std::optional<std::string>(""), std::optional<std::string>()}) {
        config.commandPath = path;
        const auto error = launchErrorOf(config);
        CHECK(error.kind == LaunchError::Kind::unsupported);
        CHECK(error.description() == "App not clonable: command shortcut has no executable");
    }
    CHECK(namesIn(tmp.path()).empty());
}

TEST_CASE("a command's tilde is expanded and a bare name is not looked up in PATH") {
    const TempDir tmp;
    const UserHome user(tmp);
    copyProgram(probe, user / "bin/tool");
    CHECK(launch(commandConfig(tmp / "h", "~/bin/tool", {"report", tmp / "report"}),
                 user.places()) == 0);
    CHECK(Report(tmp / "report").lines("argv0") == Strings{user / "bin/tool"});

    const WorkingDirectory inside(tmp.path());
    const auto error = expectThrow<ChildProcessError>(
        [&] { start(commandConfig(tmp / "h", "true"), user.places()); });

    CHECK(error.fault == ChildProcessError::Fault::executable);
}

TEST_CASE("a relative command lies below the current directory, not the working directory") {
    const TempDir tmp;
    copyProgram(probe, tmp / "here/tool");
    makeFolder(tmp / "there");
    const WorkingDirectory inside(tmp / "here");
    auto config = commandConfig(tmp / "h", "./tool", {"report", tmp / "report"});
    config.workingDirectory = tmp / "there";

    CHECK(launch(config) == 0);

    CHECK(Report(tmp / "report").lines("cwd") == Strings{tmp / "there"});
}

TEST_CASE("a working directory's tilde is expanded and a placeholder in it is not replaced") {
    const TempDir tmp;
    const UserHome user(tmp);
    makeFolder(user / "w");
    auto config = commandConfig("~/h", probe, {"report", tmp / "report"});
    config.workingDirectory = "~/w";
    CHECK(launch(config, user.places()) == 0);
    CHECK(Report(tmp / "report").lines("cwd") == Strings{user / "w"});

    config.workingDirectory = "{{instanceHome}}";
    const auto error = expectThrow<ChildProcessError>([&] { start(config, user.places()); });

    CHECK(error.fault == ChildProcessError::Fault::workingDirectory);
    config.workingDirectory.reset();
    config.commandPath = "{{instanceHome}}/tool";
    copyProgram(probe, user / "h/tool");
    expectThrow<ChildProcessError>([&] { start(config, user.places()); });
}

TEST_CASE("a command's output and errors go to the instance log") {
    const TempDir tmp;
    auto config = commandConfig(tmp / "a/b/h", "/bin/sh", {"-c", "echo out; echo err >&2; exit 3"});

    CHECK(launch(config) == 3);

    CHECK(readFile(logOf(tmp / "a/b/h")) == "out\nerr\n");
}

TEST_CASE("a command runs although its home cannot be made and its log cannot be opened") {
    const TempDir tmp;
    writeFile(tmp / "file");
    CHECK(launch(commandConfig(tmp / "file/h", probe, {"report", tmp / "report"})) == 0);
    makeFolder(logOf(tmp / "h"));
    CHECK(launch(commandConfig(tmp / "h", probe, {"report", tmp / "report"})) == 0);
}

TEST_CASE("a command's environment is the inherited one with its own entries on top") {
    const TempDir tmp;
    const ScopedVariable kept("KORVANE_TEST_KEPT", "kept");
    const ScopedVariable replaced("KORVANE_TEST_REPLACED", "old");
    auto config = commandConfig(tmp / "h", probe, {"report", tmp / "report"});
    config.environment = {{"KORVANE_TEST_REPLACED", "{{instanceHome}}:{{instanceHome}}"},
                          {"KORVANE_TEST_EMPTY", ""}};

    CHECK(launch(config) == 0);

    const auto seen = Report(tmp / "report").environment();
    CHECK(seen.at("KORVANE_TEST_KEPT") == "kept");
    CHECK(seen.at("KORVANE_TEST_REPLACED") == (tmp / "h") + ":" + (tmp / "h"));
    CHECK(seen.at("KORVANE_TEST_EMPTY").empty());
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
