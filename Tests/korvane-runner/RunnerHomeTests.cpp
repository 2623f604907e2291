#include "Wrapper.h"

using namespace ambrel;
using namespace korvane::test;

TEST_CASE("an application instance runs isolated from the user's own data") {
    const Wrapper wrapper;
    makeFolder(wrapper.user / "Documents");
    makeFolder(wrapper.user / "Library/Keychains");
    auto config = smallestConfig();
    config.instanceHome = "~/Instances/One";
    config.targetAppPath = AppBundleBuilder(wrapper.tmp / "T.app")
                               .identifier("org.example.target")
                               .executable("run", "echo \"$HOME $CFFIXED_USER_HOME $1\"; exit 6")
                               .write();
    config.extraArgs = {"--d={{instanceHome}}/d"};
    config.menuBarIcon = true; // runs as if it had none
    wrapper.configure(config);
    const auto home = wrapper.user / "Instances/One";

    const auto result = wrapper.open();

    CHECK(result.error.empty());
    CHECK(result.status == 6);
    CHECK(readFile(home + "/korvane-instance.log") == home + " " + home + " --d=" + home + "/d\n");
    CHECK(linkText(home + "/Documents") == wrapper.user / "Documents");
    CHECK(linkText(home + "/Library/Keychains") == wrapper.user / "Library/Keychains");
}

TEST_CASE("a home that has gone is prepared again by the wrapper itself") {
    const Wrapper wrapper;
    auto config =
        applicationConfig(wrapper, wrapper.user / "KorvaneInstances/One", "test -d \"$2\"");
    config.extraArgs = {"-profile", "{{instanceHome}}/Profile"};
    config.environment = {{"TMPDIR", "{{instanceHome}}/tmp"}};
    wrapper.configure(config);

    const auto result = wrapper.open();

    CHECK(result.error.empty());
    CHECK(result.status == 0);
    CHECK(modeOf(config.instanceHome) == 0700);
    CHECK(isRealFolder(config.instanceHome + "/tmp"));
    CHECK(contains(readFile(config.instanceHome + "/.config/user-dirs.dirs"), "$HOME/Documents"));
}

TEST_CASE("a command's home that has gone is prepared too, and a file has none") {
    const Wrapper wrapper;
    auto config = shell(wrapper.tmp / "h", "test -d \"$TMPDIR\"");
    config.environment = {{"TMPDIR", "{{instanceHome}}/tmp"}};
    wrapper.configure(config);
    CHECK(wrapper.open().status == 0);
    CHECK(modeOf(wrapper.tmp / "h") == 0700);
    CHECK(namesIn(wrapper.tmp / "h") == Strings{"korvane-instance.log", "tmp"});

    config.kind = ShortcutKind::file;
    config.instanceHome = wrapper.tmp / "f";
    config.openPath = "/";
    wrapper.configure(config);
    wrapper.open(); // whether there is an opener here or not
    CHECK_FALSE(isThere(wrapper.tmp / "f"));
}

TEST_CASE("a start that is refused prepares nothing") {
    const Wrapper wrapper;
    auto config = smallestConfig();
    config.instanceHome = wrapper.tmp / "h";
    config.targetAppPath = wrapper.tmp / "missing.app";
    config.shareUserFolders = false;
    wrapper.configure(config);
    checkFailure(wrapper.open(),
                 failed + "Not a readable .app bundle: " + config.targetAppPath + "\n");
    CHECK_FALSE(isThere(wrapper.tmp / "h"));

    config.targetAppPath = AppBundleBuilder(wrapper.tmp / "T.app").identifier("org.x").write();
    config.strategy = Strategy::unsupported;
    wrapper.configure(config);
    checkFailure(wrapper.open(), failed + "App not clonable: org.x\n");
    CHECK(namesIn(wrapper.tmp / "h") == Strings{"korvane-instance.log"});
}

TEST_CASE("HOME alone does not move what the runner links to") {
    const Wrapper wrapper;
    makeFolder(wrapper.tmp / "decoy/Documents");
    wrapper.configure(applicationConfig(wrapper, wrapper.tmp / "h", "exit 0"));

    const auto result =
        run({.command = {wrapper.runner}, .environment = {{"HOME", wrapper.tmp / "decoy"}}});

    CHECK(result.status == 0);
    CHECK_FALSE(isThere(wrapper.tmp / "h/Documents"));
}
