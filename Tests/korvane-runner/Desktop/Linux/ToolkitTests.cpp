#include "korvane-runner/Desktop/Linux/Toolkit.h"

#include "Support/Builders.h"
#include "Support/Expect.h"
#include "Support/Programs.h"
#include "Support/TempDir.h"

#include <filesystem>

using namespace ambrel;
using namespace korvane::test;

namespace {

const Path program = KORVANE_TEST_LATE;

/// Runs the program where an empty file stands in the place of `library`.
ProgramResult runWithout(const Path& library, const char* what) {
    const TempDir tmp;
    const auto place = std::filesystem::canonical(library).string();
    const auto hide = "mount --bind " + quoted(writeFile(tmp / "empty")) + " " + quoted(place);
    return run(commandInMountNamespace(hide, {program, what}));
}

} // namespace

TEST_CASE("a program without the toolkit's libraries opens GIO alone, and its loop runs") {
    const auto result = run({program, "gio"});

    CHECK(result.status == 7);
    CHECK(result.output == "GIO closed, engine closed\nGIO open, engine closed\n");
    CHECK(result.error.empty());
}

TEST_CASE("the installed engine has every function that is called, and GIO comes with it") {
    const auto result = run({program, "engine"});

    CHECK(result.status == 7);
    CHECK(result.output == "GIO closed, engine closed\nGIO open, engine open\n");
    CHECK(result.error.empty());
}

TEST_CASE("an unusable library is told with its name and its package's") {
    const auto engine = runWithout(KORVANE_TEST_ENGINE, "engine");
    CHECK(engine.status == 1);
    CHECK(beginsWith(engine.error, "Cannot load the library libwebkitgtk-6.0.so.4: "));
    CHECK(engine.error.ends_with("; it is part of the package libwebkitgtk-6.0-4\n"));
    CHECK(runWithout(KORVANE_TEST_ENGINE, "gio").status == 7);

    const auto gio = runWithout(KORVANE_TEST_GIO, "gio");
    CHECK(gio.status == 1);
    CHECK(beginsWith(gio.error, "Cannot load the library libgio-2.0.so.0: "));
    CHECK(gio.error.ends_with("; it is part of the package libglib2.0-0\n"));
}

// The checkers add a constructor to each object.
#ifndef __SANITIZE_ADDRESS__
TEST_CASE("nothing of what is asked of a desktop runs before main") {
    const auto sections = run({KORVANE_TEST_READELF, "-SW", KORVANE_TEST_DESKTOP});

    REQUIRE(sections.output.find(".text.") != std::string::npos);
    CHECK(sections.output.find(".init_array") == std::string::npos);
    CHECK(sections.output.find(".ctors") == std::string::npos);
}
#endif
