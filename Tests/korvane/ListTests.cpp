#include "Manager.h"

namespace korvane::test {

TEST_CASE("list shows the instances of the default folder in order") {
    const Manager manager;
    manager.create({"command", "beta", aProgram});
    manager.create({"command", "Alpha", aProgram});

    const auto text = manager.result({"list"});
    const auto json = manager.json({"list", "--json"});

    CHECK(text.find("Alpha") < text.find("beta"));
    REQUIRE(json.size() == 2);
    CHECK(json[0]["bundle"] == manager.applications() + "/Alpha.app");
    CHECK(json[0]["config"]["displayName"] == "Alpha");
    CHECK(json[0]["config"]["commandArgs"] == nlohmann::json::array());
    CHECK_FALSE(json[0].contains("icon"));
    CHECK_FALSE(json[0]["config"].contains("url"));
}

TEST_CASE("list takes folders in place of the default one") {
    const Manager manager;
    manager.create({"command", "Default", aProgram});
    manager.create({"command", "One", "--output", manager.tmp / "one", aProgram});
    manager.create({"command", "Two", "--output", manager.home / "two", aProgram});

    const auto json = manager.json({"list", "--in", "one", "--in=~/two", "--json"});

    REQUIRE(json.size() == 2);
    CHECK(json[0]["bundle"] == manager.tmp / "one/One.app");
    CHECK(json[1]["bundle"] == manager.home / "two/Two.app");
}

TEST_CASE("an empty list is an empty result and a hint") {
    const Manager manager;

    const auto done = manager.run({"list"});

    CHECK(done.status == 0);
    CHECK(done.output.empty());
    CHECK(says(done.error, "korvane create app"));
    CHECK(manager.result({"list", "--json"}) == "[]\n");
}

TEST_CASE("a name in a list cannot fake a line or turn the text around") {
    const Manager manager;
    auto config = smallestConfig();
    config.displayName = "a\nb\x1b[31m\xe2\x80\xae"
                         "c";
    writeWrapper(manager.applications() + "/x.app", config);

    const auto text = manager.result({"list"});

    CHECK(contains(text, "a\\nb\\u{1B}[31m\\u{202E}c"));
    CHECK(std::count(text.begin(), text.end(), '\n') == 2);
}

TEST_CASE("lists and JSON survive file names that are not UTF-8") {
    const Manager manager;
    writeWrapper(manager.applications() + "/bad\xff.app", smallestConfig());

    CHECK(contains(manager.result({"list"}), "bad\xef\xbf\xbd.app"));
    CHECK(manager.json({"list", "--json"})[0]["bundle"] ==
          manager.applications() + "/bad\xef\xbf\xbd.app");
    CHECK(manager.json({"show", manager.applications() + "/bad\xff.app",
                        "--json"})["config"]["displayName"] == "Mail");
}

TEST_CASE("show tells one instance by name and by path") {
    const Manager manager;
    const auto icon = writeFile(manager.tmp / "icon.icns", "icns picture");
    const auto bundle = manager.create({"command", "Work", "--icon", icon, aProgram});

    const auto json = manager.json({"show", "Work", "--json"});

    CHECK(json["bundle"] == bundle);
    CHECK(json["icon"] == bundle + "/Contents/Resources/AppIcon.icns");
    CHECK(manager.json({"show", bundle + "/", "--json"}) == json);
    CHECK(manager.json({"show", "user/Applications/Work.app", "--json"}) == json);
    CHECK(contains(manager.result({"show", "Work"}), "/bin/true"));
}

TEST_CASE("show tells the fields part by part, and none that is absent") {
    const Manager manager;
    const auto bundle =
        manager.create({"command", "Work", "--env", "B=2", "--env", "A=1", "--label", "w",
                        "--working-directory", "/tmp", "--menu-bar", aProgram, "-x", "y z"});

    CHECK(manager.result({"show", "Work"}) ==
          "name                 Work\n"
          "bundle               " +
              bundle +
              "\n"
              "identifier           app.korvane.instance.work\n"
              "kind                 command\n"
              "opens                /bin/true\n"
              "home                 " +
              manager.instanceHome("Work") +
              "\n"
              "desktopId            app.korvane.instance.work\n"
              "desktopEntry         " +
              (manager.home / ".local/share/applications/app.korvane.instance.work.desktop") +
              "\n"
              "running              false\n"
              "commandArgs          -x\n"
              "commandArgs          y z\n"
              "workingDirectory     /tmp\n"
              "instanceHome         ~/KorvaneInstances/Work\n"
              "environment          A=1\n"
              "environment          B=2\n"
              "shareUserFolders     true\n"
              "registerAsBrowser    false\n"
              "openWithPassthrough  false\n"
              "menuBarIcon          true\n"
              "menuBarIconTemplate  false\n"
              "iconLabel            w (FFFFFF, bottom)\n");
}

TEST_CASE("the words of show and those of JSON are the same") {
    const Manager manager;
    const auto icon = writeFile(manager.tmp / "icon.icns", "icns picture");
    manager.create({"command", "--icon", icon, "Work", aProgram});
    manager.create({"command", "--home", "~/elsewhere", "Plain", aProgram});
    manager.result({"unregister", "Plain"});
    for (const std::string name : {"Work", "Plain"}) {
        const auto text = "\n" + manager.result({"show", name});
        const auto json = manager.json({"show", name, "--json"});
        for (const auto& item : json.items()) {
            const auto& word = item.key();
            const auto& value = item.value();
            CAPTURE(word);
            CHECK_FALSE(value.is_null());
            const bool isConfig = word == "config";
            CHECK(isConfig == !contains(text, "\n" + word + " "));
            const auto shown = value.is_string() ? value.get<std::string>() : value.dump();
            if (!isConfig) CHECK(contains(text, " " + shown + "\n"));
        }
    }
    const auto plain = manager.json({"show", "Plain", "--json"});
    CHECK(plain["home"] == manager.home / "elsewhere");
    CHECK(plain["config"]["instanceHome"] == "~/elsewhere");
    CHECK_FALSE(plain.contains("icon"));
    CHECK_FALSE(plain.contains("desktopEntry"));
}

TEST_CASE("show tells what an instance of each kind opens") {
    const Manager manager;
    const auto app = manager.installApp("Mail", "org.example.mail");
    manager.create({"app", "A", "Mail"});
    manager.create({"web", "W", "https://example.org/"});
    manager.create({"file", "F", "/tmp"});

    CHECK(contains(manager.result({"show", "A"}), "\nopens                " + app + "\n"));
    CHECK(contains(manager.result({"show", "A"}), "\nstrategy             home-override\n"));
    CHECK(contains(manager.result({"show", "W"}), "\nopens                https://example.org/\n"));
    CHECK(contains(manager.result({"show", "F"}), "\nopens                /tmp\n"));
}

TEST_CASE("a name is exact") {
    const Manager manager;
    manager.create({"command", "Work", aProgram});

    CHECK(says(manager.refusal({"show", "work"}), "Did you mean \"Work\"?"));
    CHECK(says(manager.refusal({"show", "Work "}), "No instance is called \"Work \""));
    CHECK(says(manager.refusal({"show", ""}), "No instance is called \"\""));
}

TEST_CASE("several instances of one name are refused and listed") {
    const Manager manager;
    writeWrapper(manager.applications() + "/one.app", smallestConfig());
    writeWrapper(manager.applications() + "/two.app", smallestConfig());

    for (const std::string verb : {"show", "open", "run", "logs", "delete", "migrate"}) {
        CAPTURE(verb);
        const auto error = manager.refusal({verb, "Mail"});
        CHECK(contains(error, "\n  " + manager.applications() + "/one.app"));
        CHECK(contains(error, "\n  " + manager.applications() + "/two.app"));
    }
    CHECK(manager.json({"show", manager.applications() + "/two.app", "--json"})["bundle"] ==
          manager.applications() + "/two.app");
}

TEST_CASE("a path without an instance is refused") {
    const Manager manager;
    manager.installApp("Mail", "org.example.mail");
    CHECK(says(manager.refusal({"show", manager.applications() + "/Mail.app"}),
               "There is no instance at " + manager.applications() + "/Mail.app"));
}

TEST_CASE("a damaged configuration is refused with the reason, and not listed") {
    const Manager manager;
    writeWrapper(manager.applications() + "/x.app", R"({"displayName": "x", "bundleId": 1})");

    CHECK(says(manager.refusal({"show", manager.applications() + "/x.app"}),
               "is damaged: its configuration cannot be read. Type mismatch at bundleId"));
    CHECK(manager.result({"list", "--json"}) == "[]\n");
}

} // namespace korvane::test
