#include "StartPlanFixture.h"

#include "Ambrel/Platform/PropertyList.h"

#include <regex>

namespace korvane::test {

namespace {

/// The word of `key` that show and inspect have for an instance or application.
struct Standing {
    std::string bus, secrets, names;
    bool operator==(const Standing&) const = default;
};

Standing standingIn(const nlohmann::json& told) {
    return {told.value("sessionBus", ""), told.value("secrets", ""), told.value("busNames", "")};
}

struct Fixture : StartPlanFixture {
    Standing shown() const { return standingIn(manager.json({"show", "Work", "--json"})); }
    ambrel::StringMap overridesAfter(const Strings& change) const {
        Strings words{"edit", "Work"};
        words.insert(words.end(), change.begin(), change.end());
        manager.result(words);
        return manager.configOf(manager.applications() + "/Work.app").infoPlistOverrides;
    }
    void writeBus(const nlohmann::json& bus) const {
        auto profile = profileOf("org.example.mail");
        profile["bus"] = bus;
        writeProfile(profile);
    }
};

const ambrel::StringMap shared{{"KorvaneSharedBus", "true"}};
const ambrel::StringMap hidden{{"KorvaneHidesSecrets", "true"}};

} // namespace

TEST_CASE("an instance has names of its own on the session bus unless it is asked to share them") {
    const Fixture fixture;

    CHECK(fixture.create().infoPlistOverrides.empty());
    CHECK(fixture.shown() == Standing{"names of its own", "shared", ""});
    CHECK(fixture.create({"--replace", "--shared-bus"}).infoPlistOverrides == shared);
    CHECK(fixture.shown() == Standing{"shared (asked for)", "shared", ""});
    CHECK(fixture.create({"--replace", "--no-shared-bus"}).infoPlistOverrides.empty());
    CHECK(fixture.create({"--replace", "--hide-secrets"}).infoPlistOverrides == hidden);
    CHECK(fixture.shown() == Standing{"names of its own", "hidden", ""});
    const auto table = fixture.manager.result({"show", "Work"});
    CHECK(std::regex_search(table, std::regex("\nsessionBus +names of its own\n")));
    CHECK(std::regex_search(table, std::regex("\nsecrets +hidden\n")));
}

TEST_CASE("a bus that the environment names is that of the instance, whatever it is") {
    const Fixture fixture;

    fixture.create({"--env", "DBUS_SESSION_BUS_ADDRESS=disabled:"});

    CHECK(fixture.shown() ==
          Standing{"shared (its environment sets DBUS_SESSION_BUS_ADDRESS)", "", ""});
}

TEST_CASE("what a profile says of the bus is stored, shown and checked") {
    const Fixture fixture;
    fixture.writeBus({{"hideSecrets", true},
                      {"call", {"org.example.Panel", "org.example.Clock"}},
                      {"own", {"org.example.Tray-1"}}});

    CHECK(fixture.create().infoPlistOverrides ==
          ambrel::StringMap{{"KorvaneBusNames", "call org.example.Panel;call org.example.Clock;own "
                                                "org.example.Tray-1"},
                            {"KorvaneHidesSecrets", "true"}});
    const Standing expected{"names of its own", "hidden",
                            "call org.example.Panel, call org.example.Clock, own "
                            "org.example.Tray-1"};
    CHECK(fixture.shown() == expected);
    CHECK(standingIn(fixture.manager.json({"inspect", "Mail", "--json"})) == expected);
    CHECK(contains(fixture.manager.result({"inspect", "Mail"}), "\nsecrets             hidden\n"));
    CHECK(standingIn(fixture.manager.json({"inspect", "Mail", "--no-profile", "--json"})) ==
          Standing{"names of its own", "shared", ""});
    fixture.writeBus({{"shared", true}});
    fixture.manager.result({"delete", "Work"});
    CHECK(fixture.create().infoPlistOverrides == shared);
    CHECK(fixture.shown() == Standing{"shared (its profile says so)", "shared", ""});
    CHECK(standingIn(fixture.manager.json({"inspect", "Mail", "--json"})).bus ==
          "shared (its profile says so)");
}

TEST_CASE("a person has the last word over a profile, and a replacement keeps it") {
    const Fixture fixture;
    fixture.writeBus({{"shared", true}, {"hideSecrets", true}});
    const ambrel::StringMap own{{"KorvaneHidesSecrets", "true"}, {"KorvaneSharedBus", "false"}};

    CHECK(fixture.create({"--no-shared-bus"}).infoPlistOverrides == own);
    CHECK(fixture.create({"--replace"}).infoPlistOverrides == own);
    CHECK(fixture.overridesAfter({"--unset", "sharedBus"}).at("KorvaneSharedBus") == "true");
    CHECK(fixture.overridesAfter({"--set", "sharedBus=false"}) == own);
}

TEST_CASE("a replacement keeps what was chosen for the bus, and says so") {
    const Fixture fixture;
    const auto& manager = fixture.manager;

    fixture.create({"--shared-bus"});
    CHECK(says(fixture.replace(), "Kept of what was there: that it shares the session bus."));
    CHECK(fixture.shown().bus == "shared (asked for)");
    CHECK_FALSE(contains(fixture.replace({"--no-shared-bus", "--hide-secrets"}), "Kept"));
    CHECK(says(fixture.replace(), "Kept of what was there: that secrets are hidden from it."));
    CHECK(fixture.shown() == Standing{"names of its own", "hidden", ""});
    // What a profile said is worked out anew.
    fixture.writeBus({{"call", {"org.example.Old"}}});
    fixture.replace();
    fixture.writeBus({{"call", {"org.example.New"}}});
    fixture.replace();
    CHECK(fixture.shown().names == "call org.example.New");
    CHECK(manager.configOf(manager.create({"command", "Work", "--replace", aProgram}))
              .infoPlistOverrides.contains("KorvaneHidesSecrets") == false);
}

TEST_CASE("edit switches names of its own and secrets in configuration and Info.plist") {
    const Fixture fixture;
    const auto bundle = fixture.manager.create({"app", "Work", "Mail"});
    const auto inPlist = [&](const char* key) {
        const auto info = ambrel::readPropertyList(bundle + "/Contents/Info.plist");
        REQUIRE(info);
        return info->contains(key);
    };

    CHECK(fixture.overridesAfter({"--set", "sharedBus=true"}) == shared);
    CHECK(inPlist("KorvaneSharedBus"));
    CHECK(fixture.overridesAfter({"--unset", "sharedBus"}).empty());
    CHECK_FALSE(inPlist("KorvaneSharedBus"));
    CHECK(fixture.overridesAfter({"--set", "hideSecrets=true"}) == hidden);
    CHECK(fixture.overridesAfter({"--set", "hideSecrets=false"}).at("KorvaneHidesSecrets") ==
          "false");
    CHECK(fixture.shown() == Standing{"names of its own", "shared", ""});
}

TEST_CASE("sharing the bus warns where the program hands over, or secrets were hidden") {
    const Fixture fixture;
    const auto& manager = fixture.manager;
    const auto told = [&](const Strings& words) {
        const auto done = manager.run(words);
        REQUIRE(done.status == 0);
        return done.error;
    };
    const std::string handsOver = "warning: \"Mail\" registers on the session bus: while another";
    const std::string unhidden = "warning: hideSecrets means nothing to this instance: it shares "
                                 "the names on the session bus, so that its programs meet what "
                                 "keeps your secrets.";
    const std::string unnamed = "KorvaneBusNames means nothing to this instance: it shares the "
                                "names on the session bus.";

    fixture.writeBus({{"handsOver", true}});
    CHECK_FALSE(contains(fixture.replace({"--hide-secrets"}), "warning"));
    const auto sharing = told({"edit", "Work", "--set", "sharedBus=true"});
    CHECK(says(sharing, handsOver));
    CHECK(says(sharing, unhidden));
    // Of what was so already nothing is said.
    CHECK_FALSE(contains(told({"edit", "Work", "--set", "shareUserFolders=false"}), "warning"));
    CHECK_FALSE(contains(told({"edit", "Work", "--unset", "sharedBus"}), "warning"));
    CHECK(says(told({"edit", "Work", "--set", "environment.DBUS_SESSION_BUS_ADDRESS=x"}),
               "its environment sets DBUS_SESSION_BUS_ADDRESS, so"));
    told({"edit", "Work", "--unset", "environment.DBUS_SESSION_BUS_ADDRESS"});
    const auto replaced = fixture.replace({"--shared-bus"});
    CHECK(says(replaced, unhidden));
    CHECK_FALSE(contains(replaced, "that secrets are hidden from it"));
    manager.result({"delete", "Work"});
    CHECK(says(fixture.replace({"--shared-bus", "--plist", "KorvaneBusNames=call org.example.A"}),
               unnamed));
    CHECK_FALSE(contains(fixture.replace({"--no-shared-bus"}), "means nothing"));
    fixture.writeBus({{"hideSecrets", true}, {"call", {"org.example.A"}}});
    manager.result({"delete", "Work"});
    const auto ofProfile = fixture.replace({"--shared-bus"});
    CHECK(says(ofProfile, unhidden));
    CHECK_FALSE(contains(ofProfile, unnamed));
}

TEST_CASE("what has no effect on the bus is refused with the reason, and changes nothing") {
    const Fixture fixture;
    const auto& manager = fixture.manager;
    manager.create({"command", "Tool", aProgram});
    manager.create({"app", "Shared", "Mail", "--shared-bus"});
    fixture.create();
    const auto before = snapshot(manager.tmp.path());
    const auto refused = [&](const Strings& words, int status = 1) {
        return manager.refusal(words, status);
    };
    const Strings create{"create", "app", "New", "Mail", "--runner", KORVANE_TEST_RUNNER};
    const auto refusedWith = [&](const Strings& more) {
        auto words = create;
        words.insert(words.end(), more.begin(), more.end());
        return refused(words);
    };

    for (const std::string key : {"sharedBus", "hideSecrets"}) {
        CHECK(says(refused({"edit", "Tool", "--set", key + "=true"}),
                   key + " means nothing to an instance of the kind command: it is for the kind "
                         "app."));
        CHECK(says(refused({"edit", "Work", "--set", key + "=yes"}, 2),
                   key + " wants true or false, not \"yes\"."));
    }
    CHECK(says(refused({"edit", "Shared", "--set", "hideSecrets=true"}),
               "hideSecrets means nothing to this instance: it shares the names on the session "
               "bus, so that its programs meet what keeps your secrets."));
    CHECK(says(refusedWith({"--shared-bus", "--hide-secrets"}), "it shares the names"));
    CHECK(says(refusedWith({"--hide-secrets", "--env", "DBUS_SESSION_BUS_ADDRESS=x"}),
               "its environment sets DBUS_SESSION_BUS_ADDRESS, so"));
    CHECK(says(refusedWith({"--plist", "KorvaneSharedBus=yes"}),
               "KorvaneSharedBus wants true or false, not \"yes\"."));
    CHECK(says(refusedWith({"--plist", "KorvaneBusNames=call org.example.A;own x"}),
               "KorvaneBusNames wants \"call NAME\" or \"own NAME\" with a name on the session "
               "bus, not \"own x\"."));
    refused({"create", "web", "New", "https://example.org/", "--shared-bus"}, 2);
    CHECK(snapshot(manager.tmp.path()) == before);
}

} // namespace korvane::test
