#include "korvane-runner/Web/LinkOpener.h"

#include "Support/Expect.h"
#include "Support/Programs.h"
#include "Support/TempDir.h"
#include "korvane-runner/Signals.h"

namespace korvane::test {

TEST_CASE("what opens a link gets the environment that it is given but for the start's tokens") {
    const TempDir tmp;
    Fifo done(tmp / "done");
    writeScript(tmp / "open",
                "echo \"$1 $OTHER ${DESKTOP_STARTUP_ID-none} ${XDG_ACTIVATION_TOKEN-none}\" > " +
                    quoted(done.path()));
    runner::LinkOpener links({.open = tmp / "open"}, {{"PATH", "/usr/bin:/bin"},
                                                      {"OTHER", "kept"},
                                                      {"DESKTOP_STARTUP_ID", "a"},
                                                      {"XDG_ACTIVATION_TOKEN", "b"}});

    links.open("mailto:a@example.org");

    CHECK(done.line() == "mailto:a@example.org kept none none");
}

} // namespace korvane::test
