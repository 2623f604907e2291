#include "StartPlanFixture.h"

#include "Ambrel/Platform/PropertyList.h"

#include <sys/stat.h>

namespace korvane::test {

using Fixture = StartPlanFixture;

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
    CHECK(overridesWith("{{desktopIdCapitalized}}") ==
          ambrel::StringMap{{"KorvaneWindowClass", "App.korvane.instance.work"}});
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

} // namespace korvane::test
