#include "Manager.h"

namespace korvane::test {

TEST_CASE("apps lists the catalog, without the instances") {
    const Manager manager;
    AppBundleBuilder(manager.applications() + "/Mail.app")
        .identifier("org.example.mail")
        .iconFile("Icon")
        .file("Contents/Resources/Icon.icns")
        .write();
    manager.installApp("Browser", "org.example.browser");
    manager.create({"app", "Work", "Mail"});

    const auto json = manager.json({"apps", "--json"});

    CHECK(json ==
          nlohmann::json::array(
              {{{"bundle", manager.applications() + "/Browser.app"},
                {"name", "Browser"},
                {"identifier", "org.example.browser"}},
               {{"bundle", manager.applications() + "/Mail.app"},
                {"name", "Mail"},
                {"identifier", "org.example.mail"},
                {"icon", manager.applications() + "/Mail.app/Contents/Resources/Icon.icns"}}}));
    CHECK(contains(manager.result({"apps"}), "org.example.mail"));
}

TEST_CASE("apps takes folders in place of the default ones") {
    const Manager manager;
    manager.installApp("Mail", "org.example.mail");
    AppBundleBuilder(manager.tmp / "more/Other.app").identifier("org.example.other").write();

    const auto json = manager.json({"apps", "--in", "more/", "--json"});

    REQUIRE(json.size() == 1);
    CHECK(json[0]["bundle"] == manager.tmp / "more/Other.app");
}

TEST_CASE("no applications is an empty result and a hint") {
    const Manager manager;

    const auto done = manager.run({"apps", "--in", "nowhere"});

    CHECK(done.status == 0);
    CHECK(done.output.empty());
    CHECK(says(done.error, "korvane adopt"));
    CHECK(manager.result({"apps", "--in", "nowhere", "--json"}) == "[]\n");
}

TEST_CASE("apps lists the installed programs of menus too, by the words that find them") {
    const Manager manager;
    const std::string head = "[Desktop Entry]\nType=Application\nExec=/bin/true\n";
    const auto file = writeFile(manager.tmp / "share/applications/org.example.Reader.desktop",
                                head + "Name=Letter Reader\n");
    writeFile(manager.tmp / "share/applications/hidden.desktop",
              head + "Name=Hidden\nNoDisplay=true\n");

    CHECK(
        manager.json({"apps", "--programs", "--json"}) ==
        nlohmann::json::array(
            {{{"name", "Letter Reader"}, {"identifier", "org.example.Reader"}, {"entry", file}}}));
    CHECK(contains(manager.result({"apps", "--programs"}), "Letter Reader  org.example.Reader  "));
    manager.refusal({"apps", "--programs", "--in", "."}, 2);
    for (const std::string word : {"Letter Reader", "org.example.Reader"}) {
        manager.result({"adopt", word, "--into", manager.tmp / ("into " + word)});
    }
}

TEST_CASE("apps survives file names that are not UTF-8") {
    const Manager manager;
    AppBundleBuilder(manager.tmp / "more/bad\xff.app").write();

    const auto json = manager.json({"apps", "--in", "more", "--json"});

    CHECK(json[0]["bundle"] == manager.tmp / "more/bad\xef\xbf\xbd.app");
    CHECK(contains(manager.result({"apps", "--in", "more"}), "bad\xef\xbf\xbd"));
}

TEST_CASE("apps shows its progress on a terminal only") {
    const Manager manager;
    manager.installApp("Mail", "org.example.mail");

    CHECK(contains(manager.runOnTerminal({"apps"}, "").output, "Looking for applications: 1"));
    CHECK(manager.run({"apps"}).error.empty());
}

TEST_CASE("inspect shows identifier, flags, engine and what proved it") {
    const Manager manager;
    const auto app = manager.installApp("Fox", "ORG.Mozilla.Fox");

    const auto json = manager.json({"inspect", "Fox", "--json"});

    CHECK(json == nlohmann::json{{"bundle", app},
                                 {"identifier", "ORG.Mozilla.Fox"},
                                 {"executable", app + "/Contents/MacOS/program"},
                                 {"sandboxed", false},
                                 {"oneCopyOnly", false},
                                 {"engine", "firefox"},
                                 {"engineProof", "ORG.Mozilla.Fox"},
                                 {"strategy", "home-override"},
                                 {"extraArgs",
                                  {"-profile", "{{instanceHome}}/FirefoxProfile", "-no-remote",
                                   "--class", "{{desktopId}}", "--name", "{{desktopId}}"}},
                                 {"environment", {{"GSETTINGS_BACKEND", "keyfile"}}},
                                 {"infoPlistOverrides", nlohmann::json::object()},
                                 {"sessionBus", "names of its own"},
                                 {"secrets", "shared"}});
    CHECK(contains(manager.result({"inspect", app}), "firefox"));
}

TEST_CASE("inspect names the file that proves an engine, and leaves out what is absent") {
    const Manager manager;
    AppBundleBuilder(manager.tmp / "Code.app")
        .file("Contents/Frameworks/Electron Framework.framework/x")
        .write();
    AppBundleBuilder(manager.tmp / "Plain.app").write();

    CHECK(manager.json({"inspect", "Code.app", "--json"})["engineProof"] ==
          "Contents/Frameworks/Electron Framework.framework");
    const auto plain = manager.json({"inspect", "./Plain.app/", "--json"});
    CHECK(plain["engine"] == "other");
    CHECK_FALSE(plain.contains("engineProof"));
    CHECK(plain["extraArgs"] == nlohmann::json::array());
}

} // namespace korvane::test
