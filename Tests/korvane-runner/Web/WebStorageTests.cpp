#include "korvane-runner/Web/WebStorage.h"

#include "Support/Expect.h"
#include "Support/Files.h"
#include "Support/TempDir.h"

using namespace ambrel;
using namespace korvane::runner;
using namespace korvane::test;

TEST_CASE("what pages keep lies in folders that are closed to others") {
    const TempDir tmp;
    const WebStorage storage{tmp.path()};

    CHECK(storage.ensure());

    for (const auto& folder : {storage.root(), storage.data(), storage.cache()}) {
        CAPTURE(folder);
        CHECK(modeOf(folder) == 0700);
    }
    CHECK(storage.ensure());
}

TEST_CASE("folders that a person keeps elsewhere, by links, are used") {
    const TempDir tmp;
    const WebStorage storage{makeFolder(tmp / "home")};
    makeFolder(tmp / "elsewhere/data");
    makeFolder(tmp / "home/.local/share");
    makeLink(storage.root(), tmp / "elsewhere");

    CHECK(storage.ensure());

    CHECK(namesIn(tmp / "elsewhere") == Strings{"cache", "data"});
}

TEST_CASE("nothing can be kept where a folder can neither be made nor entered") {
    for (const char* obstacle : {"", "/.local", "/.local/share/web", "/.local/share/web/data",
                                 "/.local/share/web/cache"}) {
        CAPTURE(obstacle);
        const TempDir tmp;
        const WebStorage storage{tmp / "home"};
        const auto file = storage.home + obstacle;
        makeFolder(Path(paths::deletingLastComponent(file)));
        writeFile(file, "in the way");

        CHECK_FALSE(storage.ensure());

        CHECK(readFile(file) == "in the way");
    }
}

TEST_CASE("a home that is not there is not made") {
    const TempDir tmp;
    CHECK_FALSE(WebStorage{tmp / "home"}.ensure());
    CHECK_FALSE(isThere(tmp / "home"));
}
