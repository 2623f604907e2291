#include "Ambrel/Launch/InstanceLauncher.h"

#include "Launching.h"

#include "Support/Builders.h"
#include "Support/Environment.h"
#include "Support/Report.h"

#include <unistd.h>

using namespace ambrel;
using namespace korvane::test;

namespace {

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

TEST_CASE("what is prepared tells what it will have, and runs when it is launched") {
    const TempDir tmp;
    const UserHome user(tmp);
    auto config = commandConfig(tmp / "home", "/bin/sh", {"-c", "echo \"$A\" > ran"});
    config.workingDirectory = tmp.path();
    config.environment["A"] = "b";

    auto child = InstanceLauncher::prepare(ResolvedInstance::of(config, user.places()),
                                           user.places(), {{"C", "d"}});
    REQUIRE(child.setup().environment);
    CHECK(*child.setup().environment == Environment{{"A", "b"}, {"C", "d"}});
    CHECK_FALSE(child.isRunning());
    CHECK_FALSE(isThere(tmp / "ran"));

    child.launch();
    CHECK(statusOf(std::move(child)) == 0);
    CHECK(readFile(tmp / "ran") == "b\n");
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
