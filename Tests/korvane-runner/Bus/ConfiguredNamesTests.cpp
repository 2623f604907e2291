#include "korvane-runner/Bus/ConfiguredNames.h"

#include "Support/Builders.h"
#include "Support/Expect.h"

using namespace ambrel;
using namespace korvane::runner::bus;
using namespace korvane::test;

TEST_CASE("secrets are hidden where the configuration says so") {
    const std::string secrets = "org.freedesktop.secrets";

    const auto usual = configuredPolicy(smallestConfig());
    CHECK(usual.isShared(secrets, NameUse::call));
    CHECK(!usual.isHidden(secrets));

    const auto hiding = configuredPolicy(applicationWithOverride("KorvaneHidesSecrets", "true"));
    CHECK(!hiding.isShared(secrets, NameUse::call));
    CHECK(hiding.isHidden(secrets));
}

TEST_CASE(
    "configured names are shared for calling and owning apart, and what is none is left out") {
    const auto policy = configuredPolicy(applicationWithOverride(
        "KorvaneBusNames", "call org.example.Called;own org.example.Owned; call org.example.Late;;"
                           "org.example.None;have org.example.Some;call org.*"));

    CHECK(policy.isShared("org.example.Called", NameUse::call));
    CHECK(!policy.isShared("org.example.Called", NameUse::own));
    CHECK(policy.isShared("org.example.Owned", NameUse::own));
    CHECK(policy.isShared("org.example.Late", NameUse::call));
    for (const auto* name : {"org.example.None", "org.example.Some", "org.example"}) {
        CAPTURE(name);
        CHECK(!policy.isShared(name, NameUse::call));
    }
}
