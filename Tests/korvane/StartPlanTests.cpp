#include "Manager.h"

#include "Ambrel/Platform/PropertyList.h"
#include "Manager/Programs/ProgramProfile.h"

#include <regex>

namespace korvane::test {

namespace {

nlohmann::json profileOf(const std::string& bundleId) {
    return {{"bundleId", bundleId},     {"displayName", "Mail Reader"},
            {"sandboxed", false},       {"strategy", "home-override"},
            {"singleton", "none"},      {"prefsLeak", false},
            {"extraArgs", {"--apart"}}, {"verifiedOn", nlohmann::json::array()},
            {"confidence", "verified"}};
}

struct Fixture {
    Manager manager;
    Fixture() { manager.installApp("Mail", "org.example.mail"); }

    void writeProfile(const nlohmann::json& profile,
                      const std::string& id = "org.example.mail") const {
        writeFile(manager.home / (".config/korvane/profiles/" + id + ".json"), profile.dump());
    }
    ambrel::InstanceConfig create(Strings more = {}) const {
        more.insert(more.begin(), {"app", "Work", "Mail"});
        return manager.configOf(manager.create(more));
    }
    /// Adopts a built program, which then is the application.
    ambrel::InstanceConfig createOf(const Path& program, const Strings& more = {}) const {
        const auto into =
            manager.tmp / ("adopted" + std::to_string(namesIn(manager.tmp.path()).size()));
        const auto app = manager.result({"adopt", program, "--into", into});
        Strings words{"app", "Work", app.substr(0, app.size() - 1)};
        words.insert(words.end(), more.begin(), more.end());
        return manager.configOf(manager.create(words));
    }
};

const std::string id = "app.korvane.instance.work";

} // namespace

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

TEST_CASE("engines without a profile name their windows by arguments") {
    const Fixture fixture;
    fixture.manager.installApp("Chrome", "com.google.chrome");
    fixture.manager.installApp("Fox", "org.mozilla.other");
    const auto last = [&](const std::string& app, std::size_t count) {
        const auto args =
            fixture.manager.configOf(fixture.manager.create({"app", app + " 2", app})).extraArgs;
        REQUIRE(args.size() >= count);
        return Strings(args.end() - static_cast<std::ptrdiff_t>(count), args.end());
    };

    CHECK(last("Chrome", 1) == Strings{"--class=app.korvane.instance.chrome-2"});
    CHECK(last("Fox", 4) ==
          Strings{"--class", "app.korvane.instance.fox-2", "--name", "app.korvane.instance.fox-2"});
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

TEST_CASE("a program of a toolkit is started by its desktop id") {
    const Fixture fixture;

    const auto gtk = fixture.createOf(KORVANE_TEST_INDIRECT_PROGRAM);
    const auto qt = fixture.createOf(KORVANE_TEST_QT_PROGRAM, {"--replace"});
    const auto plain = fixture.createOf(KORVANE_TEST_PROBE, {"--replace"});

    CHECK(gtk.infoPlistOverrides == ambrel::StringMap{{"KorvaneProcessName", id}});
    CHECK(gtk.environment == ambrel::StringMap{{"GSETTINGS_BACKEND", "keyfile"}});
    CHECK(qt.infoPlistOverrides == ambrel::StringMap{{"KorvaneProcessName", id}});
    CHECK(qt.environment.at("RESOURCE_NAME") == id);
    CHECK(plain.infoPlistOverrides.empty());
    CHECK_FALSE(plain.environment.contains("RESOURCE_NAME"));
}

TEST_CASE("a launcher passes the windows' name on, which edit changes in all its places") {
    const Fixture fixture;
    writeFile(fixture.manager.tmp / "share/applications/mail.desktop",
              "[Desktop Entry]\nType=Application\nName=Launched\nExec=" KORVANE_TEST_QT_PROGRAM
              " --own %U\n");

    const auto config = fixture.createOf("mail");

    CHECK(config.infoPlistOverrides == ambrel::StringMap{{"KorvaneProcessName", id}});
    CHECK(config.environment.at("RESOURCE_NAME") == id);
    CHECK(config.environment.at("KORVANE_PROCESS_NAME") == id);
    const auto given = fixture.createOf("mail", {"--replace", "--process-name", "other"});
    CHECK(given.environment.at("KORVANE_PROCESS_NAME") == "other");
    fixture.manager.result({"edit", "Work", "--set", "infoPlistOverrides.KorvaneProcessName=new"});
    const auto edited = fixture.manager.configOf(fixture.manager.applications() + "/Work.app");
    CHECK(edited.environment.at("KORVANE_PROCESS_NAME") == "new");
}

TEST_CASE("a launcher that can pass no name on leaves the program its own") {
    const Fixture fixture;
    const auto& manager = fixture.manager;
    writeFile(manager.tmp / "share/applications/mail.desktop",
              "[Desktop Entry]\nType=Application\nName=Launched\nExec=" KORVANE_TEST_QT_PROGRAM
              " --own %U\n");
    const auto empty = makeFolder(manager.tmp / "no-shell");
    REQUIRE(manager.run({"adopt", "mail"}, {{"PATH", empty}}).status == 0);

    const auto config = manager.configOf(manager.create({"app", "Work", "Launched"}));

    CHECK(config.infoPlistOverrides.empty());
    CHECK(config.environment.at("RESOURCE_NAME") == id);
    CHECK_FALSE(config.environment.contains("KORVANE_PROCESS_NAME"));
}

TEST_CASE("create says where windows keep the program's name") {
    const Fixture fixture;
    const auto& manager = fixture.manager;
    const auto says = [&](const Strings& more) {
        manager.run({"delete", "Work"}); // a replacement would keep what was given before
        Strings words{"create", "app", "Work", "Mail", "--runner", KORVANE_TEST_RUNNER};
        words.insert(words.end(), more.begin(), more.end());
        const auto done = manager.run(words);
        REQUIRE(done.status == 0);
        return contains(done.error, "Its windows keep the name of \"Mail\" in dock and task list");
    };

    CHECK(says({}));
    CHECK_FALSE(says({"--process-name", "x"}));
    CHECK_FALSE(says({"--no-profile"}));
    auto profile = profileOf("org.example.mail");
    profile["windowName"] = {{"processName", true}};
    fixture.writeProfile(profile);
    CHECK_FALSE(says({}));
    profile["windowName"] = nlohmann::json::object();
    fixture.writeProfile(profile);
    CHECK(says({}));
}

TEST_CASE("create warns of a program that registers on the bus, unless a profile knows it") {
    const Fixture fixture;
    const auto& manager = fixture.manager;
    const std::string name{ambrel::paths::lastComponent(KORVANE_TEST_BUS_PROGRAM)};
    const auto warns = [&](const std::string& program) {
        const auto done = manager.run(
            {"create", "app", "Work", program, "--runner", KORVANE_TEST_RUNNER, "--replace"});
        REQUIRE(done.status == 0);
        const bool isTold = contains(done.error, "registers on the session bus: while another");
        CHECK(isTold == contains(done.error, "your own copy may hand over to the instance too"));
        return isTold;
    };

    CHECK(warns(KORVANE_TEST_BUS_PROGRAM));
    CHECK_FALSE(warns(KORVANE_TEST_QT_PROGRAM));
    writeFile(
        manager.tmp / "share/applications/mail.desktop",
        "[Desktop Entry]\nType=Application\nName=Bus\nDBusActivatable=true\nExec=/bin/true\n");
    CHECK(warns("mail"));
    auto profile = profileOf(name);
    profile["extraArgs"] = nlohmann::json::array();
    fixture.writeProfile(profile, name);
    CHECK_FALSE(warns(KORVANE_TEST_BUS_PROGRAM));
    profile["confidence"] = "broken";
    fixture.writeProfile(profile, name);
    CHECK(warns(KORVANE_TEST_BUS_PROGRAM));
    fixture.writeProfile(profileOf("mail"), "mail");
    CHECK_FALSE(warns("mail"));
}

TEST_CASE("a profile's name for windows reaches the program through a launcher") {
    const Fixture fixture;
    writeFile(fixture.manager.tmp / "share/applications/mail.desktop",
              "[Desktop Entry]\nType=Application\nName=Launched\nExec=" + Path(KORVANE_TEST_PROBE) +
                  " --own %U\n");
    auto profile = profileOf("mail");
    profile["windowName"] = {{"processName", true}};
    fixture.writeProfile(profile, "mail");

    CHECK(fixture.createOf("mail").environment.at("KORVANE_PROCESS_NAME") == id);
    profile["windowName"] = nlohmann::json::object();
    fixture.writeProfile(profile, "mail");
    CHECK_FALSE(
        fixture.createOf("mail", {"--replace"}).environment.contains("KORVANE_PROCESS_NAME"));
    CHECK(fixture.createOf("mail", {"--replace", "--process-name", "x"})
              .environment.at("KORVANE_PROCESS_NAME") == "x");
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
        return manager.configOf(manager.applications() + "/Work.app")
            .environment.at("JAVA_TOOL_OPTIONS");
    };

    CHECK(create({}) == "-Duser.home=\"{{instanceHome}}\"");
    CHECK(create({"--env", "JAVA_TOOL_OPTIONS=-Dx=y"}) == "-Dx=y");
}

TEST_CASE("a program in a terminal shows under the name that the terminal's toolkit heeds") {
    const Fixture fixture;
    const auto& manager = fixture.manager;
    makeLink(makeFolder(manager.tmp / "bin") + "/x-terminal-emulator", KORVANE_TEST_QT_PROGRAM);
    writeFile(manager.tmp / "share/applications/edit.desktop",
              "[Desktop Entry]\nType=Application\nName=Editor\nTerminal=true\nExec=" +
                  Path(KORVANE_TEST_PROBE) + "\n");
    REQUIRE(manager.run({"adopt", "edit"}, {{"PATH", manager.tmp / "bin"}}).status == 0);

    const auto config = manager.configOf(manager.create({"app", "Work", "Editor"}));

    CHECK(config.environment.at("RESOURCE_NAME") == id);
    CHECK(config.infoPlistOverrides.empty());
}

TEST_CASE("a process name is chosen by the user and refused where no program can have it") {
    const Fixture fixture;

    CHECK(fixture.create({"--process-name", "my mail"}).infoPlistOverrides ==
          ambrel::StringMap{{"KorvaneProcessName", "my mail"}});
    fixture.manager.result({"delete", "Work"});
    const auto profileless = fixture.createOf(KORVANE_TEST_QT_PROGRAM, {"--no-profile"});
    CHECK(profileless.infoPlistOverrides.empty());
    CHECK_FALSE(profileless.environment.contains("RESOURCE_NAME"));
    for (const std::string bad : {"", "a/b", "a\nb", "a\x7f", "\xc2\x85"}) {
        CAPTURE(bad);
        for (const auto& option :
             {Strings{"--process-name", bad}, Strings{"--plist", "KorvaneProcessName=" + bad}}) {
            Strings words{"create", "app", "New", "Mail", "--runner", KORVANE_TEST_RUNNER};
            words.insert(words.end(), option.begin(), option.end());
            CHECK(says(fixture.manager.refusal(words), "wants a name without \"/\""));
        }
    }
}

TEST_CASE("another process name goes wherever the windows' name comes from") {
    const Fixture fixture;
    fixture.manager.installApp("Chrome", "com.google.chrome");
    const auto qt = fixture.createOf(KORVANE_TEST_QT_PROGRAM, {"--process-name", "mine"});
    const auto own =
        fixture.createOf(KORVANE_TEST_QT_PROGRAM,
                         {"--replace", "--process-name", "mine", "--env", "RESOURCE_NAME=other"});
    const auto browser = fixture.manager.configOf(
        fixture.manager.create({"app", "Web", "Chrome", "--process-name", "mine"}));

    CHECK(qt.environment.at("RESOURCE_NAME") == "mine");
    CHECK(qt.infoPlistOverrides == ambrel::StringMap{{"KorvaneProcessName", "mine"}});
    CHECK(own.environment.at("RESOURCE_NAME") == "other");
    CHECK(browser.infoPlistOverrides ==
          ambrel::StringMap{{"KorvaneProcessName", "mine"},
                            {"KorvaneWindowClass", "app.korvane.instance.web"}});
}

TEST_CASE("edit takes the windows' name along with the process name") {
    const Fixture fixture;
    const auto& manager = fixture.manager;
    const std::string key = "infoPlistOverrides.KorvaneProcessName";
    const auto edited = [&](const std::string& name, const Strings& change) {
        Strings words{"edit", name};
        words.insert(words.end(), change.begin(), change.end());
        manager.result(words);
        return manager.configOf(manager.applications() + "/" + name + ".app");
    };
    fixture.createOf(KORVANE_TEST_QT_PROGRAM);
    manager.installApp("Chrome", "com.google.chrome");
    manager.create({"app", "Web", "Chrome"});

    CHECK(edited("Work", {"--set", key + "=new"}).environment.at("RESOURCE_NAME") == "new");
    CHECK(edited("Work", {"--unset", key}).environment.at("RESOURCE_NAME") == id);
    CHECK(edited("Web", {"--set", key + "=new"}).infoPlistOverrides.at("KorvaneWindowClass") ==
          "app.korvane.instance.web");
}

TEST_CASE("a bundle whose program is a pipe is inspected without waiting for it") {
    const Fixture fixture;
    const auto app = fixture.manager.applications() + "/Pipe.app";
    AppBundleBuilder(app)
        .identifier("org.example.pipe")
        .entry("CFBundleExecutable", "<string>pipe</string>")
        .entry("KorvaneProgram", "<string>" KORVANE_TEST_QT_PROGRAM "</string>")
        .write();
    makeFolder(app + "/Contents/MacOS");
    REQUIRE(::mkfifo((app + "/Contents/MacOS/pipe").c_str(), 0700) == 0);

    CHECK(fixture.manager.json({"inspect", app, "--json"})["infoPlistOverrides"].empty());
}

TEST_CASE("a profile says what a window is called that keeps its own name") {
    const Fixture fixture;
    auto profile = profileOf("org.example.mail");
    const auto overridesWith = [&](const std::string& name) {
        profile["windowName"] = {{"startupWMClass", name}};
        fixture.writeProfile(profile);
        return fixture.create({"--replace"}).infoPlistOverrides;
    };

    CHECK(overridesWith("mailer") == ambrel::StringMap{{"KorvaneWindowClass", "mailer"}});
    CHECK(overridesWith("{{desktopIdUnderscored}}") ==
          ambrel::StringMap{{"KorvaneWindowClass", "app_korvane_instance_work"}});
}

TEST_CASE("edit changes the process name in configuration and Info.plist together") {
    const Fixture fixture;
    const auto bundle = fixture.manager.create({"app", "Work", "Mail", "--process-name", "old"});
    const auto nameInPlist = [&]() -> std::optional<std::string> {
        const auto info = ambrel::readPropertyList(bundle + "/Contents/Info.plist");
        REQUIRE(info);
        CHECK(*info->at("CFBundleName").string() == "Work");
        const auto found = info->find("KorvaneProcessName");
        if (found == info->end()) return std::nullopt;
        return *found->second.string();
    };
    const std::string key = "infoPlistOverrides.KorvaneProcessName";

    fixture.manager.result({"edit", "Work", "--set", key + "=new"});
    CHECK(fixture.manager.configOf(bundle).infoPlistOverrides.at("KorvaneProcessName") == "new");
    CHECK(nameInPlist() == "new");
    const auto before = snapshot(fixture.manager.tmp.path());
    for (const std::string bad : {"", "a/b", "a\tb"}) {
        fixture.manager.refusal({"edit", "Work", "--set", key + "=" + bad});
    }
    fixture.manager.refusal({"edit", "Work", "--set", "infoPlistOverrides.Other=x"});
    CHECK(snapshot(fixture.manager.tmp.path()) == before);
    fixture.manager.result({"edit", "Work", "--unset", key});
    CHECK(fixture.manager.configOf(bundle).infoPlistOverrides.empty());
    CHECK_FALSE(nameInPlist());
    fixture.manager.refusal({"edit", "Work", "--unset", key});
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
