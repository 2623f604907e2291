#include "korvane-runner/Web/DataClaim.h"

#include "Support/Expect.h"
#include "Support/Files.h"
#include "Support/TempDir.h"

#include <filesystem>

using namespace ambrel;
using namespace korvane::runner;
using namespace korvane::test;

namespace {

Path dataFolder(const TempDir& tmp) {
    const auto folder = makeFolder(tmp / "data");
    setMode(folder, 0700);
    return folder;
}

bool never() {
    FAIL("nothing is to be waited for");
    return false;
}

} // namespace

TEST_CASE("a folder of data is claimed at once, or left to the process that has it") {
    const TempDir tmp;
    const auto folder = dataFolder(tmp);

    auto first = DataClaim::make(folder, "present", never);
    REQUIRE(first.own);
    CHECK_FALSE(first.isLeftToOther);
    const auto second = DataClaim::make(folder, "present", never);

    CHECK_FALSE(second.own);
    CHECK(second.isLeftToOther);
    CHECK(first.own->nextMessage() == "present");
}

TEST_CASE("a folder of data that is kept elsewhere, behind a link, is claimed there") {
    const TempDir tmp;
    const auto folder = dataFolder(tmp);
    std::filesystem::create_symlink(folder, tmp / "link");

    const auto first = DataClaim::make(tmp / "link", "present", never);
    const auto second = DataClaim::make(folder, "present", never);

    CHECK(first.own);
    CHECK(second.isLeftToOther);
}

TEST_CASE("the end of a process that has stopped listening is waited for") {
    const TempDir tmp;
    const auto folder = dataFolder(tmp);
    auto first = SoleProcess::claim(folder);
    REQUIRE(first);
    first->stopListening();
    int pauses = 0;

    const auto second = DataClaim::make(folder, "present", [&] {
        if (++pauses == 3) first.reset();
        return true;
    });

    CHECK(second.own);
    CHECK_FALSE(second.isLeftToOther);
    CHECK(pauses == 3);
}

TEST_CASE("nothing is waited for without end, nor for a folder that is not there") {
    const TempDir tmp;
    const auto folder = dataFolder(tmp);
    auto first = SoleProcess::claim(folder);
    REQUIRE(first);
    first->stopListening();

    const auto second = DataClaim::make(folder, "present", [] { return false; });

    CHECK_FALSE(second.own);
    CHECK_FALSE(second.isLeftToOther);
    CHECK_FALSE(DataClaim::make(tmp / "missing", "present", never).own);
}
