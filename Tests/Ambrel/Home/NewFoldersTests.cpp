#include "Ambrel/Home/NewFolders.h"

#include "Ambrel/Platform/FileSystem.h"
#include "Support/Environment.h"
#include "Support/Expect.h"

using ambrel::NewFolders;

namespace korvane::test {

TEST_CASE("folders that were made for nothing go again, and only those") {
    const TempDir tmp;
    makeFolder(tmp / "old");
    {
        NewFolders made;
        made.make(tmp / "old/a/b");
        made.makePrivate(tmp / "old/home");
        CHECK(modeOf(tmp / "old/home") == 0700);
    }

    CHECK(namesIn(tmp / "old") == Strings{});
}

TEST_CASE("folders that hold something by then, or are to be kept, stay") {
    const TempDir tmp;
    {
        NewFolders made;
        made.make(tmp / "a/b");
        writeFile(tmp / "a/file");
    }
    {
        NewFolders made;
        made.make(tmp / "kept/b");
        made.keep();
    }

    CHECK(namesIn(tmp / "a") == Strings{"file"});
    CHECK(isRealFolder(tmp / "kept/b"));
}

} // namespace korvane::test
