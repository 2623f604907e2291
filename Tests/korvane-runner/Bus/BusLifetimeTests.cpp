#include "korvane-runner/Bus/BusLifetime.h"

#include "Support/Expect.h"

using namespace korvane::runner::bus;
using namespace std::chrono_literals;

namespace {

using Present = BusLifetime::Present;
using Step = BusLifetime::Step;

const BusLifetime::Time start{};

struct Case {
    const char* who;
    Present present;
    Step atOnce;
    Step later;
};

} // namespace

TEST_CASE("whoever may need the bus keeps it, and services alone keep it no longer than a grace") {
    const Case cases[] = {
        {"the program", {.program = true}, Step::stay, Step::stay},
        {"another start", {.leases = 1}, Step::stay, Step::stay},
        {"a client", {.clients = 1}, Step::stay, Step::stay},
        {"an orphan", {.orphans = 1}, Step::stay, Step::stay},
        {"an application", {.applications = 1}, Step::stay, Step::stay},
        {"a client and services", {.clients = 1, .services = 2}, Step::stay, Step::stay},
        {"services", {.services = 1}, Step::stay, Step::endServices},
        {"nobody", {}, Step::end, Step::end},
    };
    for (const auto& each : cases) {
        CAPTURE(each.who);
        BusLifetime lifetime;

        CHECK(lifetime.step(each.present, start) == each.atOnce);
        CHECK(lifetime.step(each.present, start + BusLifetime::grace) == each.later);
    }
}

TEST_CASE("the grace is asked about at its end, and at no other time") {
    BusLifetime lifetime;

    lifetime.step({.program = true, .services = 1}, start);
    CHECK(!lifetime.next());

    lifetime.step({.services = 1}, start + 1s);
    REQUIRE(lifetime.next());
    CHECK(*lifetime.next() == start + 1s + BusLifetime::grace);
    CHECK(lifetime.step({.services = 1}, start + 2s) == Step::stay);
    CHECK(*lifetime.next() == start + 1s + BusLifetime::grace);

    CHECK(lifetime.step({.services = 1}, *lifetime.next()) == Step::endServices);
    CHECK(!lifetime.next());
    CHECK(lifetime.step({}, start + 5s) == Step::end);
}

TEST_CASE("somebody who comes back within the grace has it begin anew") {
    BusLifetime lifetime;
    lifetime.step({.services = 1}, start);
    lifetime.step({.clients = 1, .services = 1}, start + 2s);
    CHECK(!lifetime.next());

    CHECK(lifetime.step({.services = 1}, start + 4s) == Step::stay);
    CHECK(*lifetime.next() == start + 4s + BusLifetime::grace);
}

TEST_CASE("somebody who comes after the services were asked keeps it, and they are asked again") {
    BusLifetime lifetime;
    lifetime.step({.services = 1}, start);
    REQUIRE(lifetime.step({.services = 1}, start + 3s) == Step::endServices);

    CHECK(lifetime.step({.leases = 1, .services = 1}, start + 4s) == Step::stay);
    CHECK(lifetime.step({.services = 1}, start + 5s) == Step::stay);
    CHECK(lifetime.step({.services = 1}, start + 8s) == Step::endServices);
}

TEST_CASE("in a hurry services get no grace, and whoever needs the bus keeps it all the same") {
    BusLifetime lifetime;
    lifetime.hurry();

    CHECK(lifetime.step({.program = true, .services = 1}, start) == Step::stay);
    CHECK(lifetime.step({.services = 1}, start) == Step::endServices);
    CHECK(!lifetime.next());
}
