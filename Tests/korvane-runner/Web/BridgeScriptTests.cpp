#include "korvane-runner/Web/BridgeScript.h"

#include "Support/Expect.h"
#include "Support/Files.h"

using namespace korvane::runner;
using namespace korvane::test;

TEST_CASE("the program holds the bridge script as it is written") {
    CHECK(bridgeScript == readFile(KORVANE_TEST_BRIDGE));
    CHECK(contains(std::string(bridgeScript), "KorvaneNotification"));
}
