#include "korvane-runner/Desktop/Linux/HomeFolders.h"

#include "Support/Expect.h"
#include "Support/Files.h"
#include "Support/TempDir.h"

#include <cstdlib>
#include <glib.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace ambrel;
using namespace korvane::runner;
using namespace korvane::test;

namespace {

/// What GLib takes for home and settings, and what HOME is then, in a process of its own with that
/// home and those settings: GLib asks once.
Strings settled(const Path& home, const Path& config) {
    const TempDir tmp;
    const auto pid = ::fork();
    REQUIRE(pid >= 0);
    if (pid == 0) {
        ::setenv("HOME", home.c_str(), 1);
        ::setenv("XDG_CONFIG_HOME", config.c_str(), 1);
        settleHomeFolders();
        writeFile(tmp / "home", g_get_home_dir());
        writeFile(tmp / "config", g_get_user_config_dir());
        writeFile(tmp / "HOME", std::getenv("HOME"));
        ::_exit(0);
    }
    int status = -1;
    REQUIRE(::waitpid(pid, &status, 0) == pid);
    REQUIRE(status == 0);
    return {readFile(tmp / "home"), readFile(tmp / "config"), readFile(tmp / "HOME")};
}

} // namespace

TEST_CASE("folders that are there, and those that are not, stay what they are") {
    const TempDir tmp;
    for (const auto& home : {makeFolder(tmp / "home"), tmp / "missing/home"}) {
        CAPTURE(home);
        CHECK(settled(home, home + "/.config") == Strings{home, home + "/.config", home});
    }
}

TEST_CASE("folders that cannot be looked for are none, though the environment names them") {
    const TempDir tmp;
    const auto file = writeFile(tmp / "file");
    const auto good = makeFolder(tmp / "home");
    const Strings none{"/proc/nowhere", "/proc/nowhere"};
    makeLink(tmp / "loop", tmp / "loop");
    for (const auto& home : {file, file + "/home", tmp / "loop"}) {
        CAPTURE(home);
        CHECK(settled(home, good) == Strings{none[0], none[1], home});
    }
    CHECK(settled(good, file) == Strings{none[0], none[1], good});
}
