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

TEST_CASE("a profile's variables and the name of its windows are checked and shown too") {
    const Manager manager;
    auto json = nlohmann::json::parse(profile);
    json["environment"] = {{"A", "1"}};
    json["windowName"] = {{"arguments", {"--class={{desktopId}}"}}, {"processName", true}};
    const auto file = writeFile(manager.tmp / "mail.json", json.dump());

    const auto done = manager.run({"profile", "check", file});
    const auto again = manager.json({"profile", "check", file, "--json"});

    CHECK(done.status == 0);
    CHECK(contains(done.output, "\nenvironment             A=1\n"));
    CHECK(contains(done.output, "\nwindowName.arguments    --class={{desktopId}}\n"));
    CHECK(contains(done.output, "\nwindowName.processName  true\n"));
    CHECK_FALSE(contains(done.error, "warning"));
    CHECK(again == json);
}

TEST_CASE("what a profile says of the session bus is checked and shown") {
    const Manager manager;
    auto json = nlohmann::json::parse(profile);
    json["bus"] = {{"shared", true},
                   {"hideSecrets", true},
                   {"call", {"org.example.Panel"}},
                   {"own", {"org.example.Tray"}},
                   {"handsOver", false}};
    const auto file = writeFile(manager.tmp / "mail.json", json.dump());

    const auto done = manager.run({"profile", "check", file});

    CHECK(done.status == 0);
    for (const std::string row :
         {"bus.shared       true", "bus.hideSecrets  true", "bus.call         org.example.Panel",
          "bus.own          org.example.Tray", "bus.handsOver    false"}) {
        CAPTURE(row);
        CHECK(contains(done.output, "\n" + row + "\n"));
    }
    CHECK_FALSE(contains(done.error, "warning"));
    CHECK(manager.json({"profile", "check", file, "--json"}) == json);
}

TEST_CASE("what an earlier version of a profile gave is checked and shown") {
    const Manager manager;
    auto json = nlohmann::json::parse(profile);
    json["former"] = {{"extraArgs", {"--old"}}, {"environment", {{"A", "1"}}}};
    const auto file = writeFile(manager.tmp / "mail.json", json.dump());

    const auto done = manager.run({"profile", "check", file});

    CHECK(done.status == 0);
    CHECK(contains(done.output, "\nformer.extraArgs    --old\n"));
    CHECK(contains(done.output, "\nformer.environment  A=1\n"));
    CHECK_FALSE(contains(done.error, "warning"));
    CHECK(manager.json({"profile", "check", file, "--json"}) == json);
    json["former"]["arguments"] = {"--old"};
    writeFile(file, json.dump());
    CHECK(says(manager.run({"profile", "check", file}).error,
               "The key \"former.arguments\" means nothing in a profile."));
}

TEST_CASE("a profile with what can be no name on the session bus is refused with that name") {
    const Manager manager;
    auto json = nlohmann::json::parse(profile);
    const auto file = manager.tmp / "mail.json";
    for (const std::string name : {"org.example.*", "mail", "", ":1.2", "org.example.A;own a.b"}) {
        CAPTURE(name);
        for (const auto* use : {"call", "own"}) {
            json["bus"] = {{use, {name}}};
            writeFile(file, json.dump());
            CHECK(says(manager.refusal({"profile", "check", file}),
                       "\"" + name + "\" cannot be a name on the session bus."));
        }
    }
    json["bus"] = {{"shared", "yes"}};
    writeFile(file, json.dump());
    CHECK(says(manager.refusal({"profile", "check", file}), "Type mismatch at bus.shared"));
    json["bus"] = {{"share", true}};
    writeFile(file, json.dump());
    CHECK(says(manager.run({"profile", "check", file}).error,
               "The key \"bus.share\" means nothing in a profile. Did you mean "
               "\"bus.shared\"?"));
}

TEST_CASE("a profile that create would refuse is refused by its check for the same reason") {
    const Manager manager;
    manager.installApp("Mail", "org.example.mail");
    auto json = nlohmann::json::parse(profile);
    const auto file = manager.home / ".config/korvane/profiles/org.example.mail.json";
    for (const auto& environment :
         {nlohmann::json{{"", "x"}}, nlohmann::json{{"A=B", "x"}},
          nlohmann::json{{"A", std::string("a\0b", 3)}}, nlohmann::json("A=1")}) {
        json["environment"] = environment;
        writeFile(file, json.dump());
        const auto checked = manager.refusal({"profile", "check", file});
        const auto used = manager.refusal({"inspect", "Mail"});
        CHECK(used == checked.substr(0, checked.size() - 1) +
                          " Mend it, or go without it with --no-profile.\n");
    }
}

TEST_CASE("what means nothing in a profile is told, with what may be meant") {
    const Manager manager;
    auto json = nlohmann::json::parse(profile);
    json["enviroment"] = {{"A", "1"}};
    json["windowName"] = {{"argument", nlohmann::json::array()}};
    json["displayName"] = "";
    const auto file = writeFile(manager.tmp / "mail.json", json.dump());

    const auto done = manager.run({"profile", "check", file});

    CHECK(done.status == 0);
    CHECK(says(done.error, "warning: The key \"enviroment\" means nothing in a profile. Did you "
                           "mean \"environment\"?"));
    CHECK(says(done.error, "The key \"windowName.argument\" means nothing"));
    CHECK(says(done.error, "warning: Its displayName is empty."));
}

TEST_CASE("the check of a profile tells whether instances get it") {
    const Manager manager;
    const auto used = manager.home / ".config/korvane/profiles/org.example.mail.json";
    const auto other = writeFile(manager.tmp / "mail.json", profile);

    CHECK(says(manager.run({"profile", "check", other}).error,
               "It is not in use. Instances of \"org.example.mail\" get it as: " + used));
    writeFile(used, profile);
    CHECK(says(manager.run({"profile", "check", other}).error,
               "It is not in use. Instances of \"org.example.mail\" get: " + used));
    CHECK(says(manager.run({"profile", "check", used}).error,
               "Instances of \"org.example.mail\" get it."));
}

} // namespace korvane::test
