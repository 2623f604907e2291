#include "Manager/Programs/SessionBus.h"

#include "Manager/Base/Refusal.h"
#include "Support/Expect.h"

namespace korvane::test {

TEST_CASE("what a profile says of the bus comes back from the overrides that are made of it") {
    const BusUse use{.isShared = false,
                     .hidesSecrets = true,
                     .call = {"org.example.A", "org.example.B"},
                     .own = {"org.example.C"}};

    const auto overrides = overridesFor(use);

    CHECK(overridesFor(BusUse()).empty());
    CHECK(overrides.at(ambrel::busNamesKey) ==
          "call org.example.A;call org.example.B;own org.example.C");
    CHECK_NOTHROW(requireBusSettings(overrides));
    const auto standing = busStanding(overrides, {}, use);
    CHECK(standing.hasOwnNames());
    CHECK(standing.hidesSecrets);
    CHECK(standing.sharedNames.size() == 3);
}

TEST_CASE("an environment that names a bus goes before all that is said of it") {
    const ambrel::StringMap shared{{ambrel::sharedBusKey, "true"}};
    const ambrel::StringMap variable{{"DBUS_SESSION_BUS_ADDRESS", "unix:path=/bus"}};
    const BusUse said{.isShared = true, .hidesSecrets = false, .call = {}, .own = {}};

    CHECK(busStanding({}, {}, {}).sharing == BusSharing::none);
    CHECK(busStanding({}, {}, said).sharing == BusSharing::none);
    CHECK(busStanding(shared, {}, {}).sharing == BusSharing::asked);
    CHECK(busStanding(shared, {}, BusUse()).sharing == BusSharing::asked);
    CHECK(busStanding(shared, {}, said).sharing == BusSharing::byProfile);
    CHECK(busStanding(shared, variable, said).sharing == BusSharing::byVariable);
    CHECK(busStanding({{ambrel::sharedBusKey, "false"}}, {}, said).sharing == BusSharing::none);
}

} // namespace korvane::test
