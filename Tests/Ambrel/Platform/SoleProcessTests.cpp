#include "Ambrel/Platform/SoleProcess.h"

#include "Support/Expect.h"
#include "Support/Files.h"
#include "Support/TempDir.h"

#include <poll.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace ambrel;
using namespace korvane::test;

namespace {

bool isReadable(int descriptor) {
    pollfd watched{descriptor, POLLIN, 0};
    return ::poll(&watched, 1, 0) == 1;
}

Path privateFolder(const TempDir& tmp) {
    makeFolder(tmp / "data");
    setMode(tmp / "data", 0700);
    return tmp / "data";
}

} // namespace

TEST_CASE("a folder has one process, and what others say to it arrives in order") {
    const TempDir tmp;
    const auto folder = privateFolder(tmp);
    auto sole = SoleProcess::claim(folder);
    REQUIRE(sole);
    CHECK_FALSE(SoleProcess::claim(folder));
    CHECK_FALSE(isReadable(sole->descriptor()));
    CHECK_FALSE(sole->nextMessage());

    CHECK(SoleProcess::call(folder, "first one"));
    CHECK(SoleProcess::call(folder, ""));
    CHECK(isReadable(sole->descriptor()));
    CHECK(sole->nextMessage() == "first one");
    CHECK(sole->nextMessage() == "");
    CHECK_FALSE(sole->nextMessage());
    CHECK_FALSE(isReadable(sole->descriptor())); // the callers' going is no end
}

TEST_CASE("a folder that its process has given back can be claimed, and nobody answers meanwhile") {
    const TempDir tmp;
    const auto folder = privateFolder(tmp);
    CHECK_FALSE(SoleProcess::call(folder, "early"));
    {
        auto sole = SoleProcess::claim(folder);
        REQUIRE(sole);
        sole->stopListening();
        CHECK_FALSE(SoleProcess::call(folder, "late"));
        CHECK_FALSE(SoleProcess::claim(folder));
    }
    CHECK_FALSE(SoleProcess::call(folder, "between"));
    auto next = SoleProcess::claim(folder);
    REQUIRE(next);
    CHECK_FALSE(next->nextMessage());
}

TEST_CASE("a folder is free again when its process was killed") {
    const TempDir tmp;
    const auto folder = privateFolder(tmp);
    const auto child = ::fork();
    REQUIRE(child >= 0);
    if (child == 0) {
        const auto sole = SoleProcess::claim(folder);
        ::kill(::getpid(), sole ? SIGKILL : SIGTERM);
    }
    int status = 0;
    REQUIRE(::waitpid(child, &status, 0) == child);
    REQUIRE(WIFSIGNALED(status));
    REQUIRE(WTERMSIG(status) == SIGKILL); // it had the folder
    CHECK(SoleProcess::claim(folder));
}

TEST_CASE("what lies in the place of the pipe is neither written to nor waited for nor replaced") {
    const TempDir tmp;
    const auto folder = privateFolder(tmp);
    writeFile(folder + "/calls", "a letter\n");
    CHECK_FALSE(SoleProcess::claim(folder));
    CHECK_FALSE(SoleProcess::call(folder, "x"));
    CHECK(readFile(folder + "/calls") == "a letter\n");

    REQUIRE(::unlink((folder + "/calls").c_str()) == 0);
    REQUIRE(::mkfifo((tmp / "pipe").c_str(), 0600) == 0);
    REQUIRE(::symlink((tmp / "pipe").c_str(), (folder + "/calls").c_str()) == 0);
    CHECK_FALSE(SoleProcess::claim(folder));
}

TEST_CASE("a folder that others may enter is not claimed") {
    const TempDir tmp;
    const auto folder = privateFolder(tmp);
    setMode(folder, 0755);
    CHECK_FALSE(SoleProcess::claim(folder));
    CHECK_FALSE(SoleProcess::claim(tmp / "missing"));
}

TEST_CASE("a message that would not arrive in one piece is not left") {
    const TempDir tmp;
    const auto folder = privateFolder(tmp);
    auto sole = SoleProcess::claim(folder);
    REQUIRE(sole);
    const std::string longest(SoleProcess::longestMessage, 'x');
    CHECK(SoleProcess::call(folder, longest));
    CHECK(sole->nextMessage() == longest);
    CHECK_FALSE(SoleProcess::call(folder, longest + "x"));
    // A process that never listens does not hold up who calls it.
    int left = 0;
    while (left < 10000 && SoleProcess::call(folder, longest)) ++left;
    CHECK(left < 10000);
    CHECK(sole->nextMessage() == longest);
}
