#include "korvane-runner/Bus/OwnerTable.h"

#include "Support/Expect.h"

using namespace korvane::runner::bus;
using namespace korvane::test;

namespace {

OwnerTable twoPrograms() {
    OwnerTable owners;
    REQUIRE(owners.connected(":1.5", 105) == 1);
    owners.connected(":1.6", 106);
    return owners;
}

} // namespace

TEST_CASE("a name is whose the bus last said it was") {
    auto owners = twoPrograms();
    CHECK_FALSE(owners.isOwned("k.org.a"));

    owners.acquired("k.org.a", ":1.5");
    CHECK(owners.ownerOf("k.org.a") == ":1.5");
    CHECK(owners.processOf("k.org.a") == 105);

    owners.lost("k.org.a", ":1.5");
    owners.acquired("k.org.a", ":1.6");
    CHECK(owners.ownerOf("k.org.a") == ":1.6");
    CHECK(owners.processOf("k.org.a") == 106);

    owners.lost("k.org.a", ":1.6");
    CHECK_FALSE(owners.isOwned("k.org.a"));
}

TEST_CASE("a name that passes on stays with its new owner, whoever is heard first") {
    auto owners = twoPrograms();
    owners.acquired("k.org.a", ":1.5");

    owners.acquired("k.org.a", ":1.6");
    owners.lost("k.org.a", ":1.5");

    CHECK(owners.ownerOf("k.org.a") == ":1.6");
}

TEST_CASE("each connection has the names that it has, and no others") {
    using Names = std::vector<std::string>;
    auto owners = twoPrograms();
    owners.acquired("k.org.a", ":1.5");
    owners.acquired("k.org.b", ":1.5");
    owners.acquired("k.org.c", ":1.6");
    CHECK(owners.namesOf(":1.5") == Names{"k.org.a", "k.org.b"});

    owners.acquired("k.org.b", ":1.6");
    owners.lost("k.org.b", ":1.5");
    owners.lost("k.org.a", ":1.5");
    CHECK(owners.namesOf(":1.5").empty());
    CHECK(owners.namesOf(":1.6") == Names{"k.org.b", "k.org.c"});

    owners.connected(":1.6", 107); // another one of that name
    CHECK(owners.namesOf(":1.6").empty());
    CHECK_FALSE(owners.isOwned("k.org.c"));
    CHECK(owners.processOf(":1.6") == 107);
}

TEST_CASE("what ends has nothing any more") {
    auto owners = twoPrograms();
    owners.acquired("k.org.a", ":1.5");
    owners.acquired("k.org.b", ":1.5");
    owners.acquired("k.org.c", ":1.6");

    owners.disconnected(":1.5", 1);
    owners.acquired("k.org.d", ":1.5");

    CHECK_FALSE(owners.isOwned("k.org.a"));
    CHECK_FALSE(owners.isOwned("k.org.b"));
    CHECK(owners.isOwned("k.org.c"));
    CHECK_FALSE(owners.isOwned("k.org.d"));
    CHECK(owners.processOf(":1.5") == std::nullopt);
    owners.disconnected(":1.5", 1);
}

TEST_CASE("a unique name is its connection's own") {
    auto owners = twoPrograms();
    owners.acquired(":1.5", ":1.6");

    CHECK(owners.ownerOf(":1.5") == ":1.5");
    CHECK(owners.processOf(":1.5") == 105);
    CHECK(owners.ownerOf(":1.7") == std::nullopt);
    CHECK(owners.processOf(":1.7") == std::nullopt);
}

TEST_CASE("a unique name that another bus gives again is the new connection's") {
    auto owners = twoPrograms();
    owners.acquired("k.org.a", ":1.5");

    const auto second = owners.connected(":1.5", 205);
    CHECK_FALSE(owners.isOwned("k.org.a"));
    owners.acquired("k.org.b", ":1.5");
    owners.disconnected(":1.5", 1); // what was connected to the bus before

    CHECK(owners.processOf("k.org.b") == 205);
    owners.disconnected(":1.5", second);
    CHECK_FALSE(owners.isOwned("k.org.b"));
}
