#include "korvane-runner/Desktop/Linux/EngineSandbox.h"

#include "Support/Expect.h"
#include "Support/Files.h"
#include "Support/TempDir.h"
#include "Support/Waiting.h"
#include "korvane-runner/Desktop/WebDesktop.h"

using namespace ambrel;
using namespace korvane::runner;
using namespace korvane::test;

namespace {

constexpr const char* variable = "WEBKIT_DISABLE_SANDBOX_THIS_IS_DANGEROUS";
const std::string start = "The web engine cannot lock its processes in ";

std::string refusal(const SandboxTools& tools, const Environment& environment = {}) {
    EngineSandbox sandbox(environment, tools);
    return expectThrow<DesktopError>([&] { sandbox.require(); }).what();
}

} // namespace

TEST_CASE("the trial starts the tool with all the namespaces, and silence of it is consent") {
    const TempDir tmp;
    const auto seen = tmp / "seen";
    const auto tool = writeScript(tmp / "bwrap", "printf '%s ' \"$@\" >" + quoted(seen) + "\n");

    EngineSandbox({}, {.bubblewrap = tool, .busProxy = tool}).require();

    CHECK(readFile(seen) == "--unshare-uts --unshare-pid --unshare-net --unshare-ipc --ro-bind / / "
                            "--dev /dev --proc /proc /bin/true ");
}

TEST_CASE("a tool that is missing is told with its package") {
    const TempDir tmp;
    const auto works = writeScript(tmp / "works", "exit 0");
    const auto plain = writeFile(tmp / "plain");
    for (const auto& tool : {tmp / "missing", plain}) {
        CHECK(refusal({.bubblewrap = tool, .busProxy = works}) ==
              start + "without " + tool + ", which is part of the package bubblewrap");
        CHECK(refusal({.bubblewrap = works, .busProxy = tool}) ==
              start + "without " + tool + ", which is part of the package xdg-dbus-proxy");
    }
}

TEST_CASE("a system that does not allow the locks is told in one line of the tool's own words") {
    const TempDir tmp;
    const auto works = writeScript(tmp / "works", "exit 0");
    const auto refuses = [&](const std::string& script) {
        return refusal({.bubblewrap = writeScript(tmp / "bwrap", script), .busProxy = works});
    };
    CHECK(refuses("echo 'bwrap: No permissions to create new namespace' >&2; echo more; exit 1") ==
          start + "on this system: bwrap: No permissions to create new namespace");
    CHECK(refuses("printf 'a\\033[31m\\n' >&2; exit 1") == start + "on this system: a\\u{1B}[31m");
    CHECK(refuses("exit 7") == start + "on this system: bubblewrap failed");
    CHECK(refuses("kill -9 $$") == start + "on this system: bubblewrap failed");
}

TEST_CASE("the trial goes on beside what is done meanwhile, and its outcome is waited for") {
    const TempDir tmp;
    const auto go = makeFifo(tmp / "go");
    const auto tool = writeScript(tmp / "bwrap", "read line <" + quoted(go) + "; exit 1");
    EngineSandbox sandbox({}, {.bubblewrap = tool, .busProxy = tool});

    writeFile(go, "x\n"); // which the tool reads only now

    CHECK(expectThrow<DesktopError>([&] { sandbox.require(); }).what() ==
          start + "on this system: bubblewrap failed");
}

TEST_CASE("a person who switches the sandbox off by the engine's own variable is asked nothing") {
    const TempDir tmp;
    const SandboxTools missing{.bubblewrap = tmp / "missing", .busProxy = tmp / "missing"};
    for (const char* value : {"1", "", "yes", "00"}) {
        CAPTURE(value);
        EngineSandbox({{variable, value}}, missing).require();
    }
    CHECK(beginsWith(refusal(missing, {{variable, "0"}}), start));
}

TEST_CASE("what the installed tool says about this system is what require() goes by") {
    const bool isAllowed =
        run({"/usr/bin/bwrap", "--unshare-uts", "--unshare-pid", "--unshare-net", "--unshare-ipc",
             "--ro-bind", "/", "/", "--dev", "/dev", "--proc", "/proc", "/bin/true"})
            .status == 0;
    if (isAllowed) {
        EngineSandbox({}).require();
    } else {
        CHECK(beginsWith(refusal({}), start + "on this system: bwrap: "));
    }
}
