#include "Support/Environment.h"
#include "Support/Programs.h"

#include <doctest/doctest.h>

using namespace korvane::test;

TEST_CASE("a program inside a bundle has its resources and data in the bundle") {
    const TempDir tmp;
    copyProgram(KORVANE_TEST_HELPER, tmp / "A.app/Contents/MacOS/helper");
    makeFolder(tmp / "A.app/Contents/Resources");
    makeLink(tmp / "link", tmp / "A.app/Contents/MacOS/helper");

    const auto said = run({tmp / "link", "bundle"});

    const auto resources = tmp / "A.app/Contents/Resources";
    CHECK(said.output ==
          (tmp / "A.app/Contents/MacOS/helper") + "\n" + resources + "\n" + resources + "\n");
}

TEST_CASE("a program in a bin folder has its resources in lib and its data in share beside it") {
    const TempDir tmp;
    copyProgram(KORVANE_TEST_HELPER, tmp / "prefix/bin/helper");
    makeFolder(tmp / "prefix/lib/korvane");
    makeFolder(tmp / "prefix/share/korvane");

    const auto said = run({tmp / "prefix/bin/helper", "bundle"});

    CHECK(said.output == (tmp / "prefix/bin/helper") + "\n" + (tmp / "prefix/lib/korvane") + "\n" +
                             (tmp / "prefix/share/korvane") + "\n");
}

TEST_CASE("a program with neither beside it has no resources and no data") {
    const TempDir tmp;
    copyProgram(KORVANE_TEST_HELPER, tmp / "bin/helper");
    writeFile(tmp / "share/korvane", "no folder");

    const auto said = run({tmp / "bin/helper", "bundle"});

    CHECK(said.output == (tmp / "bin/helper") + "\nabsent\nabsent\n");
}
