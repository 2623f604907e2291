#include "Manager/Files/StagingFolder.h"

#include "Ambrel/Platform/FileSystem.h"
#include "Support/Environment.h"
#include "Support/Expect.h"
#include "Support/Programs.h"

#include <csignal>
#include <sys/wait.h>
#include <unistd.h>

namespace korvane::test {

namespace {

/// Makes a folder in `parent`, lets `use` do something with it, and ends as a killed process does.
template <class Use> Path abandonedIn(const Path& parent, const Use& use) {
    const pid_t child = ::fork();
    if (child == 0) {
        StagingFolder staging(parent);
        use(staging);
        ::raise(SIGKILL);
    }
    int status = 0;
    REQUIRE(::waitpid(child, &status, 0) == child);
    REQUIRE(WIFSIGNALED(status));
    for (const auto& name : namesIn(parent)) {
        if (name.starts_with(".korvane-")) return parent + "/" + name;
    }
    FAIL("nothing was left behind");
    return {};
}

Path abandonedWithFile(const Path& parent) {
    return abandonedIn(parent, [](const StagingFolder& staging) {
        writeFile(staging.path() + "/Work.app/file", "unfinished");
    });
}

} // namespace

TEST_CASE("what a killed process left in its hidden folder goes when the next one is made") {
    const TempDir tmp;
    const auto left = abandonedWithFile(tmp.path());
    REQUIRE(isThere(left + "/Work.app/file"));

    { const StagingFolder next(tmp.path()); }

    CHECK(namesIn(tmp.path()).empty());
}

TEST_CASE("the hidden folder of a process that still works is not touched") {
    const TempDir tmp;
    StagingFolder first(tmp.path());
    writeFile(first.path() + "/Work.app/file", "unfinished");

    { const StagingFolder second(tmp.path()); }

    CHECK(readFile(first.path() + "/Work.app/file") == "unfinished");
    first.remove();
    CHECK(namesIn(tmp.path()).empty());
}

TEST_CASE("several that make hidden folders at once do not take each other's") {
    const TempDir tmp;
    const auto parent = makeFolder(tmp / "Applications");
    constexpr int processes = 4;
    constexpr int folders = 200;
    std::vector<pid_t> children;
    for (int i = 0; i < processes; ++i) {
        const pid_t child = ::fork();
        if (child == 0) {
            try {
                for (int made = 0; made < folders; ++made) {
                    const StagingFolder staging(parent);
                    writeFile(staging.path() + "/file", "mine");
                }
                ::_exit(0);
            } catch (const std::exception&) {
                ::_exit(1);
            }
        }
        children.push_back(child);
    }

    for (const pid_t child : children) {
        int status = 0;
        REQUIRE(::waitpid(child, &status, 0) == child);
        CHECK(status == 0);
    }
    CHECK(namesIn(parent).empty());
}

TEST_CASE("what was exchanged and not looked at yet stays after a kill, and goes once it may") {
    const TempDir tmp;
    for (const bool mayGo : {false, true}) {
        CAPTURE(mayGo);
        writeFile(tmp / "Work.app/file", "somebody's");
        const auto left = abandonedIn(tmp.path(), [&](StagingFolder& staging) {
            const auto built = staging.path() + "/Work.app";
            writeFile(built + "/file", "new");
            staging.exchange(built, tmp / "Work.app");
            if (mayGo) staging.mayGo();
        });

        { const StagingFolder next(tmp.path()); }

        CHECK(readFile(tmp / "Work.app/file") == "new");
        CHECK(isThere(left) != mayGo);
        if (!mayGo) {
            CHECK(readFile(left + "/Work.app/file") == "somebody's");
            ambrel::fileSystem::removeTree(left);
        }
        ambrel::fileSystem::removeTree(tmp / "Work.app");
    }
}

TEST_CASE("a folder that is left on purpose stays") {
    const TempDir tmp;
    {
        StagingFolder staging(tmp.path());
        writeFile(staging.path() + "/Work.app/file", "kept");
        staging.leave();
    }

    { const StagingFolder next(tmp.path()); }

    REQUIRE(namesIn(tmp.path()).size() == 1);
    CHECK(readFile(tmp / namesIn(tmp.path()).front() + "/Work.app/file") == "kept");
}

TEST_CASE("what merely looks like a hidden folder of ours stays") {
    const TempDir tmp;
    const auto left = abandonedWithFile(tmp.path());
    const std::string marker;
    REQUIRE(readFile(left + "/this-folder-may-be-removed") == marker);
    const auto name = ambrel::paths::lastComponent(left);
    const auto alike = [&](const std::string& digits) {
        return tmp / ".korvane-" + digits + std::string(name.substr(name.rfind('-')));
    };
    writeFile(alike("0000000000000001") + "/letter", "without a marker");
    setMode(alike("0000000000000001"), 0700);
    writeFile(alike("0000000000000002") + "/letter", "with another marker");
    writeFile(alike("0000000000000002") + "/this-folder-may-be-removed", "please");
    setMode(alike("0000000000000002"), 0700);
    writeFile(alike("0000000000000003") + "/this-folder-may-be-removed", marker); // open to others
    makeFolder(tmp / "elsewhere");
    writeFile(tmp / "elsewhere/this-folder-may-be-removed", marker);
    setMode(tmp / "elsewhere", 0700);
    makeLink(alike("0000000000000004"), tmp / "elsewhere");
    writeFile(tmp / ".korvane-mine/this-folder-may-be-removed", marker);
    setMode(tmp / ".korvane-mine", 0700);
    writeFile(alike("0000000000000005"), "a file");
    ambrel::fileSystem::removeTree(left);
    const auto before = snapshot(tmp.path());

    { const StagingFolder next(tmp.path()); }

    CHECK(snapshot(tmp.path()) == before);
}

TEST_CASE("another user's hidden folder stays") {
    if (::geteuid() != 0) {
        MESSAGE("only root can give a folder to somebody else");
        return;
    }
    const TempDir tmp;
    const auto left = abandonedWithFile(tmp.path());
    giveToOrdinaryUser(left);

    { const StagingFolder next(tmp.path()); }

    CHECK(isThere(left + "/Work.app/file"));
}

TEST_CASE("an empty hidden folder that was never marked goes") {
    const TempDir tmp;
    const auto left = abandonedIn(tmp.path(), [](const StagingFolder& staging) {
        ambrel::fileSystem::removeTree(staging.path() + "/this-folder-may-be-removed");
    });

    { const StagingFolder next(tmp.path()); }

    CHECK_FALSE(isThere(left));
}

} // namespace korvane::test
