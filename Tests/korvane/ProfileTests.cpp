#include "Manager.h"

namespace korvane::test {

namespace {

const std::string profile = R"({"bundleId": "org.example.mail", "displayName": "Mail",
    "sandboxed": false, "strategy": "home-override", "singleton": "lockFile", "prefsLeak": true,
    "extraArgs": ["-x"], "verifiedOn": ["14.5"], "confidence": "verified"})";

} // namespace

TEST_CASE("profile check shows the profile reconciled with the signature") {
    const Manager manager;
    const auto file = writeFile(manager.tmp / "mail.json", profile);

    CHECK(manager.json({"profile", "check", file, "--json"})["confidence"] == "verified");
    CHECK(manager.json({"profile", "check", file, "--signature", "14.5", "--json"})["confidence"] ==
          "verified");
    const auto lowered =
        manager.json({"profile", "check", "mail.json", "--signature", "14.6", "--json"});
    CHECK(lowered["confidence"] == "autoDetected");
    CHECK(lowered["verifiedOn"] == nlohmann::json{"14.5"});
    CHECK(manager.json({"profile", "check", file, "--signature", "", "--json"})["confidence"] ==
          "autoDetected");
}

TEST_CASE("profile check says that it lowered the confidence") {
    const Manager manager;
    const auto file = writeFile(manager.tmp / "mail.json", profile);

    const auto done = manager.run({"profile", "check", file, "--signature", "15"});

    CHECK(done.status == 0);
    CHECK(contains(done.output, "autoDetected"));
    CHECK(says(done.error, "lowered from verified to autoDetected"));
}

TEST_CASE("what is no profile is a failure with the reason") {
    const Manager manager;
    const auto file = writeFile(manager.tmp / "mail.json", R"({"bundleId": 1})");

    CHECK(says(manager.refusal({"profile", "check", file}), "Type mismatch at bundleId"));
    CHECK(says(manager.refusal({"profile", "check", "nope.json"}), manager.tmp / "nope.json"));
    CHECK(says(manager.refusal({"profile", "check", manager.tmp.path()}), manager.tmp.path()));
}

} // namespace korvane::test
