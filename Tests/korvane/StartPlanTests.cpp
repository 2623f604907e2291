#include "StartPlanFixture.h"

#include "Manager/Programs/ProgramProfile.h"

#include <regex>

namespace korvane::test {

using Fixture = StartPlanFixture;

TEST_CASE("the arguments of engine and profile and window name and user come in this order") {
    const Fixture fixture;
    fixture.manager.installApp("Browser", "org.chromium.chromium-own");
    auto profile = profileOf("org.chromium.chromium-own");
    profile["windowName"] = {{"arguments", {"--class={{desktopId}}"}}};
    fixture.writeProfile(profile, "org.chromium.chromium-own");
    const auto arguments = [&](Strings more) {
        fixture.manager.run({"delete", "Work"});
        more.insert(more.begin(), {"app", "Work", "Browser"});
        return fixture.manager.configOf(fixture.manager.create(more)).extraArgs;
    };
    const std::string data = "--user-data-dir={{instanceHome}}/KorvaneData";

    CHECK(arguments({"--add-arg", "-x"}) == Strings{data, "--apart", "--class=" + id, "-x"});
    CHECK(arguments({"--arg", "-y", "--add-arg", "-x"}) == Strings{"-y", "-x"});
    CHECK(arguments({"--no-profile", "--add-arg", "-x"}) == Strings{data, "-x"});
    CHECK(arguments({"--bundle-id", "org.example.own"}).back() == "--class=org.example.own");
}

TEST_CASE("a replacement works out anew what was worked out, and keeps what was added") {
    const Fixture fixture;
    const auto& manager = fixture.manager;
    manager.installApp("Browser", "org.chromium.chromium-own");
    manager.installApp("Fox", "org.mozilla.other");
    const auto made = [&](const std::string& app, Strings more) {
        more.insert(more.begin(), {"app", "Work", app, "--replace"});
        return manager.configOf(manager.create(more));
    };
    const std::string data = "--user-data-dir={{instanceHome}}/KorvaneData";
    const std::string name = "--class=" + id;

    made("Browser", {"--add-arg", "--mine", "--env", "A=1", "--home", "~/h", "--no-share-folders",
                     "--strategy", "wrapper-identity", "--menu-bar"});
    const auto same = made("Browser", {"--env", "B=2"});
    CHECK(same.extraArgs == Strings{data, name, "--mine"});
    CHECK(same.environment ==
          ambrel::StringMap{{"A", "1"}, {"B", "2"}, {"GSETTINGS_BACKEND", "keyfile"}});
    CHECK(same.strategy == ambrel::Strategy::wrapperIdentity);
    CHECK_FALSE(same.shareUserFolders);
    CHECK(same.menuBarIcon);
    CHECK(made("Browser", {"--add-arg", "--mine"}).extraArgs == same.extraArgs);
    CHECK(made("Browser", {"--bundle-id", "org.example.own"}).extraArgs ==
          Strings{data, "--class=org.example.own", "--mine"});

    const auto other = made("Fox", {});
    CHECK(other.extraArgs == Strings{"-profile", "{{instanceHome}}/FirefoxProfile", "-no-remote",
                                     "--class", "org.example.own", "--name", "org.example.own",
                                     "--mine"});
    CHECK(other.strategy == ambrel::Strategy::homeOverride);
    CHECK(other.instanceHome == "~/h");
    CHECK(other.bundleId == "org.example.own");
    CHECK(other.environment.at("A") == "1");

    const auto command =
        manager.configOf(manager.create({"command", "Work", "--replace", aProgram}));
    CHECK(command.environment == ambrel::StringMap{{"A", "1"}, {"B", "2"}});
    CHECK(command.extraArgs == Strings{});
    CHECK(command.instanceHome == "~/h");
}

TEST_CASE("a replacement leaves out what an earlier profile gave, and keeps what is the user's") {
    const Fixture fixture;
    const auto& manager = fixture.manager;
    auto profile = profileOf("org.example.mail");
    profile["extraArgs"] = {"--old", "--apart"};
    profile["environment"] = {{"OLD", "1"}, {"CHANGED", "1"}};
    fixture.writeProfile(profile);
    fixture.create({"--add-arg", "--mine", "--env", "MINE=1"});
    const auto config = [&] { return manager.configOf(manager.applications() + "/Work.app"); };

    profile["former"] = {{"extraArgs", {"--old", "--apart"}},
                         {"environment", {{"OLD", "1"}, {"CHANGED", "1"}}}};
    profile["extraArgs"] = {"--new"};
    profile["environment"] = {{"CHANGED", "2"}};
    fixture.writeProfile(profile);
    const auto first = fixture.replace();
    CHECK(says(first,
               "Not kept, because an earlier profile had given it: the variables CHANGED OLD, "
               "the arguments --old --apart."));
    CHECK(says(first, "Kept of what was there: the variable MINE, the argument --mine."));
    CHECK(config().extraArgs == Strings{"--new", "--mine"});
    CHECK(config().environment ==
          ambrel::StringMap{{"CHANGED", "2"}, {"GSETTINGS_BACKEND", "keyfile"}, {"MINE", "1"}});
    // What is the user's own by now, or only a part of what was given, stays.
    CHECK_FALSE(contains(fixture.replace({"--add-arg", "--old", "--env", "OLD=2"}), "Not kept"));
    CHECK_FALSE(contains(fixture.replace(), "Not kept"));
    CHECK(config().extraArgs == Strings{"--new", "--mine", "--old"});
    CHECK(config().environment.at("OLD") == "2");
}

TEST_CASE("a replacement keeps arguments in place of others, and that no profile was used") {
    const Fixture fixture;
    const auto& manager = fixture.manager;
    manager.installApp("Browser", "org.chromium.chromium-own");
    const auto made = [&](const std::string& name, Strings more) {
        more.insert(more.begin(), {"app", name, "Browser", "--replace"});
        return manager.configOf(manager.create(more)).extraArgs;
    };

    made("Own", {"--arg", "-y", "--add-arg", "-z"});
    CHECK(made("Own", {}) == Strings{"-y", "-z"});
    CHECK(made("Own", {"--arg", "-n"}) == Strings{"-n"});
    const auto plain = made("Plain", {"--no-profile", "--add-arg", "-z"});
    CHECK(made("Plain", {}) == plain);
}

TEST_CASE("an instance's settings stay out of the user's unless given otherwise") {
    const Fixture fixture;

    CHECK(fixture.create().environment == ambrel::StringMap{{"GSETTINGS_BACKEND", "keyfile"}});
    CHECK(fixture.create({"--replace", "--env", "GSETTINGS_BACKEND=dconf"}).environment ==
          ambrel::StringMap{{"GSETTINGS_BACKEND", "dconf"}});
    fixture.manager.result({"delete", "Work"});
    CHECK(fixture.create({"--no-profile"}).environment ==
          ambrel::StringMap{{"GSETTINGS_BACKEND", "keyfile"}});
}

TEST_CASE("a profile's environment is overridden by the user's") {
    const Fixture fixture;
    auto profile = profileOf("org.example.mail");
    profile["environment"] = {{"TMPDIR", "{{instanceHome}}/tmp"}, {"A", "profile"}};
    profile["windowName"] = {{"environment", {{"RESOURCE_NAME", "{{desktopId}}"}}}};
    fixture.writeProfile(profile);

    const auto config = fixture.create({"--env", "A=user"});

    CHECK(config.environment == ambrel::StringMap{{"A", "user"},
                                                  {"GSETTINGS_BACKEND", "keyfile"},
                                                  {"RESOURCE_NAME", id},
                                                  {"TMPDIR", "{{instanceHome}}/tmp"}});
    CHECK(isRealFolder(fixture.manager.instanceHome("Work") + "/tmp"));
    CHECK(modeOf(fixture.manager.instanceHome("Work") + "/tmp") == 0700);
}

TEST_CASE("create says which profile it used and how far that goes here") {
    const Fixture fixture;
    fixture.writeProfile(profileOf("org.example.mail"));
    const Strings words{"create", "app",      "Work", "Mail", "--runner", KORVANE_TEST_RUNNER,
                        "--json", "--replace"};

    const auto untried = fixture.manager.run(words);
    auto broken = profileOf("org.example.mail");
    broken["confidence"] = "broken";
    fixture.writeProfile(broken);
    const auto without = fixture.manager.run(words);

    CHECK(says(untried.error, "Used the profile of \"Mail Reader\", which was not tried on "));
    const auto profile = nlohmann::json::parse(untried.output)["profile"];
    CHECK(profile["confidence"] == "autoDetected");
    CHECK(profile["file"] ==
          fixture.manager.home / ".config/korvane/profiles/org.example.mail.json");
    CHECK(says(without.error, "warning: Used the profile of \"Mail Reader\", which says that it "
                              "cannot be kept apart."));
    CHECK_FALSE(fixture.manager
                    .json({"create", "app", "Other", "Mail", "--runner", KORVANE_TEST_RUNNER,
                           "--json", "--no-profile"})
                    .contains("profile"));
}

TEST_CASE("a profile that cannot be used is refused with its path before anything is written") {
    const Fixture fixture;
    auto incomplete = profileOf("org.example.mail");
    incomplete.erase("verifiedOn");
    auto other = profileOf("org.example.other");
    auto mistyped = profileOf("org.example.mail");
    mistyped["windowName"] = {{"arguments", "--class"}};
    auto unstartable = profileOf("org.example.mail");
    unstartable["environment"] = {{"A=B", "x"}};
    auto cut = profileOf("org.example.mail");
    cut["extraArgs"] = {std::string("a\0b", 3)};
    for (const auto& bad :
         {incomplete, other, mistyped, unstartable, cut, nlohmann::json("text")}) {
        CAPTURE(bad.dump());
        fixture.writeProfile(bad);
        const auto before = snapshot(fixture.manager.tmp.path());

        const auto message = fixture.manager.refusal(
            {"create", "app", "Work", "Mail", "--runner", KORVANE_TEST_RUNNER});

        CHECK(says(message, ".config/korvane/profiles/org.example.mail.json"));
        CHECK(says(message, "--no-profile"));
        fixture.manager.refusal({"inspect", "Mail"});
        CHECK(snapshot(fixture.manager.tmp.path()) == before);
    }
    CHECK(fixture.manager.run({"inspect", "Mail", "--no-profile"}).status == 0);
    CHECK(fixture.create({"--no-profile"}).extraArgs.empty());
}

TEST_CASE("an identifier that is a path leads to no profile") {
    const Fixture fixture;
    fixture.manager.installApp("Odd", "../../../evil");
    writeFile(fixture.manager.home / "evil.json", "no profile");

    CHECK_FALSE(fixture.manager.create({"app", "Work", "Odd"}).empty());
}

TEST_CASE("every installed profile can be read and describes the application it is named after") {
    const Path folder = KORVANE_TEST_SOURCES "/Sources/Manager/Programs/Linux/Profiles";
    for (const auto& name : namesIn(folder)) {
        CAPTURE(name);
        const auto text = readFile(folder + "/" + name);
        const auto profile = ProgramProfile::decode(text);
        CHECK(profile.profile.bundleId + ".json" == name);
        CHECK(nlohmann::json::parse(text).dump(2) + "\n" == text);
        // Who claims that it was tried says where, and the other way round.
        const bool wasTried = profile.profile.confidence != ambrel::Confidence::autoDetected;
        CHECK(wasTried == !profile.profile.verifiedOn.empty());
        CHECK(isUsable(profile));
        CHECK(unknownKeys(text).empty());
    }
    for (const std::string name :
         {"org.xfce.mousepad", "org.gnome.TextEditor", "gimp", "org.inkscape.Inkscape",
          "org.keepassxc.KeePassXC", "org.gnome.Nautilus", "org.pwmt.zathura", "featherpad"}) {
        CAPTURE(name);
        CHECK(isThere(folder + "/" + name + ".json"));
    }
}

TEST_CASE("create warns of a program that registers on a shared bus, unless a profile knows it") {
    const Fixture fixture;
    const auto& manager = fixture.manager;
    const std::string name{ambrel::paths::lastComponent(KORVANE_TEST_BUS_PROGRAM)};
    const auto warns = [&](const std::string& program, const Strings& how = {"--shared-bus"}) {
        const auto told = fixture.replaceBy(program, how);
        const bool isTold = contains(told, "registers on the session bus: while another");
        CHECK(isTold == contains(told, "your own copy may hand over to the instance too"));
        return isTold;
    };

    CHECK(warns(KORVANE_TEST_BUS_PROGRAM));
    CHECK_FALSE(warns(KORVANE_TEST_BUS_PROGRAM, {"--no-shared-bus"}));
    CHECK(warns(KORVANE_TEST_BUS_PROGRAM,
                {"--no-shared-bus", "--env", "DBUS_SESSION_BUS_ADDRESS=x"}));
    manager.result({"delete", "Work"}); // a replacement would keep the variable
    CHECK_FALSE(warns(KORVANE_TEST_QT_PROGRAM));
    writeFile(
        manager.tmp / "share/applications/mail.desktop",
        "[Desktop Entry]\nType=Application\nName=Bus\nDBusActivatable=true\nExec=/bin/true\n");
    CHECK(warns("mail"));
    CHECK_FALSE(warns("mail", {"--no-shared-bus"}));
    auto profile = profileOf(name);
    profile["extraArgs"] = nlohmann::json::array();
    fixture.writeProfile(profile, name);
    CHECK(warns(KORVANE_TEST_BUS_PROGRAM));
    profile["bus"] = {{"shared", true}};
    fixture.writeProfile(profile, name);
    CHECK(warns(KORVANE_TEST_BUS_PROGRAM, {}));
    profile["bus"] = {{"shared", true}, {"handsOver", false}};
    fixture.writeProfile(profile, name);
    CHECK_FALSE(warns(KORVANE_TEST_BUS_PROGRAM, {}));
    fixture.writeProfile(profileOf("mail"), "mail");
    CHECK_FALSE(warns("mail"));
}

TEST_CASE("create warns of what a profile or a service of the bus tells of a shared bus") {
    const Fixture fixture;
    const auto& manager = fixture.manager;
    const std::string name{ambrel::paths::lastComponent(KORVANE_TEST_QT_PROGRAM)};
    auto profile = profileOf(name);
    profile["bus"] = {{"handsOver", true}};
    const auto warns = [&](const std::string& program, const Strings& how = {"--shared-bus"}) {
        return contains(fixture.replaceBy(program, how),
                        "registers on the session bus: while another copy runs, this "
                        "instance may hand over to that, and will not be kept apart "
                        "then; your own copy may hand over to the instance too.");
    };

    CHECK_FALSE(warns(KORVANE_TEST_QT_PROGRAM));
    fixture.writeProfile(profile, name);
    CHECK(warns(KORVANE_TEST_QT_PROGRAM));
    CHECK_FALSE(warns(KORVANE_TEST_QT_PROGRAM, {"--no-shared-bus"}));
    // The entry says nothing of the bus, which starts what the program hands over to.
    const auto share = manager.tmp / "share";
    writeFile(share + "/applications/org.example.Term.desktop",
              "[Desktop Entry]\nType=Application\nName=Term\nExec=/bin/true\n");
    CHECK_FALSE(warns("org.example.Term"));
    writeFile(share + "/dbus-1/services/org.example.Term.service",
              "[D-BUS Service]\nName=org.example.Term\nExec=/bin/false\n");
    CHECK(warns("org.example.Term"));
    CHECK_FALSE(warns("org.example.Term", {"--no-shared-bus"}));
}

TEST_CASE("every installed profile knows what its program's own name on the bus means") {
    const Path folder = KORVANE_TEST_SOURCES "/Sources/Manager/Programs/Linux/Profiles/";
    const auto handsOver = [&](const std::string& program) {
        return ProgramProfile::decode(readFile(folder + program + ".json")).bus.handsOver;
    };

    for (const std::string program :
         {"vlc", "gimp", "featherpad", "org.gajim.Gajim", "virt-manager"}) {
        CAPTURE(program);
        CHECK(handsOver(program) == true);
    }
    for (const std::string program :
         {"transmission-gtk", "org.gnome.Calculator", "org.pwmt.zathura"}) {
        CAPTURE(program);
        CHECK(handsOver(program) == false);
    }
}

TEST_CASE("create warns of a socket by which copies meet wherever their homes are") {
    const Fixture fixture;
    const auto warns = [&](const std::string& program, const Strings& more = {}) {
        return contains(fixture.replaceBy(program, more),
                        "has a socket by which it may hand over to a copy that runs");
    };

    CHECK(warns(KORVANE_TEST_SOCKET_PROGRAM));
    CHECK_FALSE(warns(KORVANE_TEST_SERVICE_PROGRAM));
    CHECK_FALSE(warns(KORVANE_TEST_QT_PROGRAM));
    const std::string name{ambrel::paths::lastComponent(KORVANE_TEST_SOCKET_PROGRAM)};
    fixture.writeProfile(profileOf(name), name);
    CHECK_FALSE(warns(KORVANE_TEST_SOCKET_PROGRAM));
    CHECK(warns(KORVANE_TEST_SOCKET_PROGRAM, {"--no-profile"}));
    CHECK_FALSE(warns(KORVANE_TEST_SOCKET_PROGRAM,
                      {"--no-profile", "--env", "TMPDIR={{instanceHome}}/tmp"}));
}

TEST_CASE("create warns of an Eclipse program's launcher, unless a profile knows the program") {
    const Fixture fixture;
    const auto& manager = fixture.manager;
    writeFile(manager.applications() + "/Mail.app/Contents/Eclipse/eclipse.ini", "");
    const auto warns = [&] {
        const auto done = manager.run(
            {"create", "app", "Work", "Mail", "--runner", KORVANE_TEST_RUNNER, "--replace"});
        REQUIRE(done.status == 0);
        return says(done.error, "warning: \"Mail\" is an Eclipse program, whose launcher may hand "
                                "files over to the window of a copy that runs: on X11 that is not "
                                "kept apart.");
    };

    CHECK(warns());
    manager.result({"delete", "Work"}); // a replacement would go without the profile as well
    fixture.writeProfile(profileOf("org.example.mail"));
    CHECK_FALSE(warns());
}

TEST_CASE("a Java program is told its home, and so is the user") {
    const Fixture fixture;
    const auto& manager = fixture.manager;
    const auto tool = writeScript(manager.tmp / "bin/tool", "exec java -jar tool.jar");
    const auto create = [&](const Strings& more) {
        Strings words{"create", "app", "Work", tool, "--runner", KORVANE_TEST_RUNNER, "--replace"};
        words.insert(words.end(), more.begin(), more.end());
        const auto done = manager.run(words);
        CHECK(done.status == 0);
        CHECK(contains(done.error, "\"tool\" is a Java program"));
        CHECK(says(done.error, "Whether a Java program hands over to a copy that runs cannot be "
                               "told: by its window, a port or a file in the temporary folder "
                               "\"tool\" is not kept apart."));
        return manager.configOf(manager.applications() + "/Work.app")
            .environment.at("JAVA_TOOL_OPTIONS");
    };

    CHECK(create({}) == "-Duser.home=\"{{instanceHome}}\"");
    CHECK(create({"--env", "JAVA_TOOL_OPTIONS=-Dx=y"}) == "-Dx=y");
}

TEST_CASE("inspect shows what create stores") {
    const Fixture fixture;
    auto profile = profileOf("org.example.mail");
    profile["environment"] = {{"A", "1"}};
    profile["strategy"] = "wrapper-identity";
    profile["windowName"] = {{"arguments", {"--name={{desktopId}}"}},
                             {"processName", true},
                             {"startupWMClass", "{{desktopIdUnderscored}}"}};
    fixture.writeProfile(profile);

    const auto found = fixture.manager.json({"inspect", "Mail", "--json"});

    CHECK(found["extraArgs"] == nlohmann::json{"--apart", "--name={{desktopId}}"});
    CHECK(found["environment"] == nlohmann::json{{"A", "1"}, {"GSETTINGS_BACKEND", "keyfile"}});
    CHECK(found["infoPlistOverrides"]["KorvaneProcessName"] == "{{desktopId}}");
    CHECK(found["profile"]["confidence"] == "autoDetected");
    CHECK(contains(fixture.manager.result({"inspect", "Mail"}), "autoDetected"));
    const auto bundle = fixture.manager.create({"app", "Work", "Mail"});
    const auto stored = fixture.manager.json({"show", bundle, "--json"});
    const auto storedId = stored["desktopId"].get<std::string>();
    const auto withId = [&](const nlohmann::json& part) {
        auto text = std::regex_replace(part.dump(), std::regex(R"(\{\{desktopId\}\})"), storedId);
        auto underscored = storedId;
        std::ranges::replace(underscored, '.', '_');
        text = std::regex_replace(text, std::regex(R"(\{\{desktopIdUnderscored\}\})"), underscored);
        return nlohmann::json::parse(text);
    };
    for (const auto* key : {"extraArgs", "environment", "infoPlistOverrides", "strategy"}) {
        CAPTURE(key);
        CHECK(withId(found[key]) == stored["config"][key]);
    }
}

} // namespace korvane::test
