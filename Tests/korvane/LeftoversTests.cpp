#include "Manager.h"

namespace korvane::test {

namespace {

/// A manager with an instance called Other, and what one called Work left behind.
struct Fixture {
    Fixture() {
        manager.create({"command", "Other", aProgram});
        manager.create({"command", "Work", aProgram});
        writeFile(home + "/letter", std::string(2'345'678, 'x'));
        manager.run({"delete", "Work"});
    }

    Manager manager;
    Path home = manager.instanceHome("Work");
};

} // namespace

TEST_CASE("leftovers lists the homes that no instance has, with size and day") {
    const Fixture fixture;

    const auto done = fixture.manager.run({"leftovers"});

    CHECK(done.status == 0);
    CHECK(contains(done.output, fixture.home + "  2.3 MB  20"));
    CHECK_FALSE(contains(done.output, "Other"));
    CHECK(says(done.error, "korvane leftovers delete"));
    const auto json = fixture.manager.json({"leftovers", "--json"});
    REQUIRE(json.size() == 1);
    CHECK(json[0].at("home") == fixture.home);
    CHECK(json[0].at("bytes") >= 2'345'678);
    CHECK(json[0].at("lastUsed").get<std::string>().ends_with("Z"));
}

TEST_CASE("without leftovers that is said, and JSON is an empty list") {
    const Manager manager;
    manager.create({"command", "Work", aProgram});

    const auto done = manager.run({"leftovers"});

    CHECK(done.output.empty());
    CHECK(says(done.error, "No instance left a home behind."));
    CHECK(manager.json({"leftovers", "--json"}) == nlohmann::json::array());
}

TEST_CASE("leftovers delete asks, and takes anything but yes for no") {
    const Fixture fixture;
    const auto& manager = fixture.manager;
    CHECK(says(manager.refusal({"leftovers", "delete", "Work"}), "--yes"));
    CHECK(manager.runOnTerminal({"leftovers", "delete", "Work"}, "\n").status == 1);
    CHECK(manager.runOnTerminal({"leftovers", "delete", "Work", "--no-input"}, "y\n").status == 1);
    CHECK(isThere(fixture.home + "/letter"));

    const auto done = manager.runOnTerminal({"leftovers", "delete", "Work"}, "y\n");

    CHECK(done.status == 0);
    CHECK(contains(done.output, "2.3 MB"));
    CHECK_FALSE(isThere(fixture.home));
}

TEST_CASE("leftovers delete takes several homes, and none when one of them is an instance's") {
    const Fixture fixture;
    const auto& manager = fixture.manager;
    const auto second = makeFolder(manager.instanceHome("Second"));

    CHECK(says(manager.refusal({"leftovers", "delete", "Work", "Other", "--yes"}),
               "the instance \"Other\""));
    CHECK(isThere(fixture.home));
    CHECK(says(manager.refusal({"leftovers", "delete", "~/Documents", "--yes"}),
               "is no home that an instance left behind. See: korvane leftovers"));

    manager.result({"leftovers", "delete", "Work", second, "--yes"});

    CHECK_FALSE(isThere(fixture.home));
    CHECK_FALSE(isThere(second));
    CHECK(isThere(manager.instanceHome("Other")));
}

TEST_CASE("leftovers delete goes on behind a home that it cannot delete") {
    const Fixture fixture;
    const auto& manager = fixture.manager;
    const auto second = makeFolder(manager.instanceHome("Second"));

    // The second time it is gone.
    const auto done = manager.run({"leftovers", "delete", "Work", "Work", "Second", "--yes"});

    CHECK(done.status == 1);
    CHECK(says(done.error, fixture.home + " is no home that an instance left behind."));
    CHECK(says(done.error, "Deleted " + second + "."));
    CHECK_FALSE(isThere(second));
}

} // namespace korvane::test
