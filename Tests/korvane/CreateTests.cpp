#include "Manager.h"

#include "Ambrel/Platform/PropertyList.h"

namespace korvane::test {

namespace {

std::string plistString(const Path& bundle, const std::string& key) {
    const auto plist = ambrel::readPropertyList(bundle + "/Contents/Info.plist");
    REQUIRE(plist);
    const auto* text = plist->at(key).string();
    REQUIRE(text);
    return *text;
}

} // namespace

TEST_CASE("create app prints the bundle's path alone and says what to do next") {
    const Manager manager;
    manager.installApp("Mail", "org.example.mail");

    const auto done =
        manager.run({"create", "app", "Work", "Mail", "--runner", KORVANE_TEST_RUNNER});

    CHECK(done.status == 0);
    CHECK(done.output == manager.applications() + "/Work.app\n");
    CHECK(says(done.error, "Created \"Work\"."));
    CHECK(says(done.error, "korvane open Work\n"));
    const auto config = manager.configOf(manager.applications() + "/Work.app");
    CHECK(config.displayName == "Work");
    CHECK(config.bundleId == "app.korvane.instance.work");
    CHECK(config.targetAppPath == manager.applications() + "/Mail.app");
    CHECK(config.instanceHome == "~/KorvaneInstances/Work");
}

TEST_CASE("create makes the instance home for its user alone") {
    const Manager manager;
    manager.create({"command", "Work", aProgram});

    CHECK(isRealFolder(manager.instanceHome("Work")));
    CHECK(modeOf(manager.instanceHome("Work")) == 0700);
}

TEST_CASE("create leaves the rights of a home that was there") {
    const Manager manager;
    makeFolder(manager.instanceHome("Work"));
    setMode(manager.instanceHome("Work"), 0755);

    manager.create({"command", "Work", aProgram});

    CHECK(modeOf(manager.instanceHome("Work")) == 0755);
}

TEST_CASE("create makes the folders that the engine's arguments name") {
    struct Row {
        std::string identifier;
        std::string folder;
    };
    for (const auto& row : {Row{"org.mozilla.firefox", "FirefoxProfile"},
                            Row{"org.chromium.chromium", "KorvaneData"}}) {
        const Manager manager;
        manager.installApp("App", row.identifier);
        manager.create({"app", "Work", "App"});
        CHECK(namesIn(manager.instanceHome("Work")) == Strings{".config", row.folder});
        CHECK(modeOf(manager.instanceHome("Work") + "/" + row.folder) == 0700);
    }
}

TEST_CASE("create makes no folder outside the home, whatever an argument names") {
    const Manager manager;
    manager.installApp("App", "org.chromium.chromium");

    manager.create({"app", "Work", "App", "--arg", "--user-data-dir={{instanceHome}}/../../out",
                    "--add-arg", "--user-data-dir=" + (manager.tmp / "elsewhere")});

    CHECK(namesIn(manager.instanceHome("Work")) == Strings{".config"});
    CHECK_FALSE(isThere(manager.home / "out"));
    CHECK_FALSE(isThere(manager.tmp / "elsewhere"));
}

TEST_CASE("an application is found by name, by identifier and by path") {
    const Manager manager;
    const auto app = manager.installApp("Mail", "org.example.mail");

    for (const Strings& words :
         {Strings{"a", "Mail"}, Strings{"b", "org.example.mail"}, Strings{"c", app + "/"},
          Strings{"d", "~/Applications/Mail.app"}}) {
        CAPTURE(words);
        const auto bundle = manager.create({"app", words[0], words[1]});
        CHECK(manager.configOf(bundle).targetAppPath == app);
    }
}

TEST_CASE("an application that is not there is refused with a hint") {
    const Manager manager;
    manager.installApp("Mail Reader", "org.example.mail");

    CHECK(says(manager.refusal({"create", "app", "x", "Mail Raeder"}),
               "Did you mean \"Mail Reader\"?"));
    CHECK(says(manager.refusal({"create", "app", "x", "reader"}), "Did you mean \"Mail Reader\"?"));
    CHECK(says(manager.refusal({"create", "app", "x", "/nope.app"}),
               "Not a readable .app: /nope.app"));
    CHECK_FALSE(isThere(manager.home / "KorvaneInstances"));
}

TEST_CASE("several applications of one name are refused and listed") {
    const Manager manager;
    manager.installApp("Mail", "org.example.mail");
    manager.installApp("Other", "Mail");

    const auto error = manager.refusal({"create", "app", "x", "Mail"});

    CHECK(contains(error, "\n  " + manager.applications() + "/Mail.app"));
    CHECK(contains(error, "\n  " + manager.applications() + "/Other.app"));
}

TEST_CASE("an application without types of files cannot be offered for opening them") {
    const Manager manager;
    manager.installApp("App", "org.example.app");

    CHECK(says(manager.refusal({"create", "app", "Work", "App", "--open-with"}),
               "\"App\" names no types of files that it opens"));
    CHECK_FALSE(isThere(manager.home / "KorvaneInstances"));
}

TEST_CASE("a home behind a missing folder and back is used") {
    const Manager manager;
    makeFolder(manager.home / "Data");

    CHECK(manager.run({"create", "command", "Work", "--home", "~/x/../Data", aProgram}).status ==
          0);

    CHECK(isThere(manager.home / "Data"));
}

TEST_CASE("a name may begin with a dash, behind two dashes") {
    const Manager manager;

    const auto done = manager.run(
        {"create", "command", "--runner", KORVANE_TEST_RUNNER, "--", "-x", aProgram, "-y"});

    CHECK(done.status == 0);
    CHECK(done.output == manager.applications() + "/-x.app\n");
    CHECK(says(done.error, "korvane open -- -x\n"));
    CHECK(manager.configOf(manager.applications() + "/-x.app").commandArgs == Strings{"-y"});
}

TEST_CASE("names that are awkward to type make instances that are found again") {
    const Manager manager;
    for (const std::string name : {"a:b", "it's", "\"q\"", "$(touch x)", "`y`", "100%s", "😀 ça",
                                   "עברית", "Mail", "x\u202ecba"}) {
        CAPTURE(name);
        const auto bundle =
            manager.create({"command", name, "--bundle-id", "id." + name, aProgram});
        CHECK(bundle == manager.applications() + "/" + name + ".app");
        CHECK(manager.json({"show", name, "--json"})["config"]["displayName"] == name);
    }
}

TEST_CASE("a refused name leaves nothing behind") {
    const Manager manager;
    for (const std::string name : {"/", "..", ".", ".x", "a/b", "a\nb", " ", "\xff"}) {
        CAPTURE(name);
        CHECK(says(manager.refusal({"create", "command", name, aProgram}), "name"));
    }
    CHECK(
        says(manager.refusal({"create", "command", std::string(300, 'n'), aProgram}), "too long"));
    CHECK(namesIn(manager.home.path()) == Strings{});
}

TEST_CASE("text that is not UTF-8 is refused wherever it stands") {
    const Manager manager;
    const std::string bad = "x\xff";
    for (const Strings& words : {Strings{"web", "n", bad}, Strings{"file", "n", bad},
                                 Strings{"command", "n", aProgram, bad},
                                 Strings{"command", "n", "--env", "A=" + bad, aProgram},
                                 Strings{"command", "n", "--plist", bad + "=1", aProgram},
                                 Strings{"command", "n", "--home", bad, aProgram},
                                 Strings{"command", "n", "--output", bad, aProgram},
                                 Strings{"command", "n", "--bundle-id", bad, aProgram},
                                 Strings{"command", "n", "--label", bad, aProgram},
                                 Strings{"command", "n", "--working-directory", bad, aProgram},
                                 Strings{"app", "n", "--arg", bad, aProgram},
                                 Strings{"app", "n", "--add-arg", bad, aProgram}}) {
        CAPTURE(words);
        Strings whole{"create"};
        whole.insert(whole.end(), words.begin(), words.end());
        CHECK(says(manager.refusal(whole), "is not UTF-8"));
    }
    CHECK(namesIn(manager.home.path()) == Strings{});
    CHECK(namesIn(manager.tmp.path()) == Strings{"data", "share", "user"});
}

TEST_CASE("where the data lies, and how to open it, is said where that is so") {
    const Manager manager;
    manager.installApp("Mail", "org.example.mail");
    writeFile(manager.tmp / "doc.pdf");
    const auto said = [&](Strings words) {
        words.insert(words.begin(), "create");
        words.insert(words.begin() + 2, {"--runner", KORVANE_TEST_RUNNER});
        const auto done = manager.run(words);
        REQUIRE(done.status == 0);
        return std::pair(contains(done.error, "Its data lives in "),
                         contains(done.error, "Open it with: "));
    };

    CHECK(said({"app", "A", "Mail"}) == std::pair(true, true));
    CHECK(said({"app", "U", "Mail", "--strategy", "unsupported"}) == std::pair(true, false));
    CHECK(said({"command", "C", aProgram}) == std::pair(false, true));
    CHECK(said({"file", "D", "doc.pdf"}) == std::pair(false, true));
    CHECK(said({"file", "G", "gone.pdf"}) == std::pair(false, false));
    CHECK(said({"web", "W", "https://example.org/"}) == std::pair(true, true));
    CHECK_FALSE(isThere(manager.instanceHome("D")));
}

TEST_CASE("a failed first creation leaves nothing behind") {
    const Manager manager;

    const auto done = manager.run({"create", "command", "Work", "--output", manager.tmp / "new/out",
                                   "--plist", "K=\x01", "--runner", KORVANE_TEST_RUNNER, aProgram});

    CHECK(done.status == 1);
    CHECK(done.output.empty());
    CHECK_FALSE(isThere(manager.tmp / "new"));
    CHECK(namesIn(manager.home.path()) == Strings{});
}

TEST_CASE("a target of which only one copy may run is warned about") {
    const Manager manager;
    AppBundleBuilder(manager.applications() + "/Mail.app")
        .identifier("org.example.mail")
        .entry("LSMultipleInstancesProhibited", "<true/>")
        .write();

    const auto done =
        manager.run({"create", "app", "Work", "Mail", "--runner", KORVANE_TEST_RUNNER});

    CHECK(done.status == 0);
    CHECK(says(done.error, "warning: \"Mail\" allows only one running copy"));
    CHECK(says(done.error, "not be kept apart"));
}

TEST_CASE("a status item is for what runs, and one in one color is one") {
    const Manager manager;

    const auto plain =
        manager.configOf(manager.create({"command", "Plain", "--menu-bar", aProgram}));
    CHECK(plain.menuBarIcon);
    CHECK_FALSE(plain.menuBarIconTemplate);
    const auto lines =
        manager.configOf(manager.create({"web", "Lines", "--menu-bar-template", "example.org"}));
    CHECK(lines.menuBarIcon);
    CHECK(lines.menuBarIconTemplate);
    CHECK(says(manager.refusal({"create", "file", "Paper", "--menu-bar", aProgram}, 2),
               "--menu-bar"));
}

TEST_CASE("create tells where the data of a web site lives, and how to open it") {
    const Manager manager;

    const auto done = manager.run({"create", "web", "Site", "--no-share-folders", "example.org",
                                   "--runner", KORVANE_TEST_RUNNER});

    CHECK(done.status == 0);
    CHECK(done.error == "Created \"Site\".\n"
                        "Its data lives in ~/KorvaneInstances/Site.\n"
                        "Open it with: korvane open Site\n");
    const auto config = manager.configOf(manager.applications() + "/Site.app");
    CHECK(config.url == "example.org");
    CHECK_FALSE(config.shareUserFolders);
}

TEST_CASE("create refuses what is no address of a web site, and leaves nothing behind") {
    const Manager manager;
    const auto before = snapshot(manager.home.path());

    const auto refusal = manager.refusal(
        {"create", "web", "Site", "https://mail example.org/", "--runner", KORVANE_TEST_RUNNER});

    CHECK(refusal == "korvane: \"https://mail example.org/\" is no address of a web site: its host "
                     "holds a blank, a control character or a bracket that is not closed.\n");
    CHECK(snapshot(manager.home.path()) == before);
}

TEST_CASE("create tells programs the instance as JSON") {
    const Manager manager;

    const auto made = manager.json(
        {"create", "command", "Work", "--json", "--runner", KORVANE_TEST_RUNNER, aProgram});

    CHECK(made == manager.json({"show", "Work", "--json"}));
}

TEST_CASE("the new bundle carries its name and identifier") {
    const Manager manager;
    const auto bundle = manager.create({"command", "Ça va", aProgram});

    CHECK(plistString(bundle, "CFBundleName") == "Ça va");
    CHECK(plistString(bundle, "CFBundleIdentifier") == "app.korvane.instance.ça-va");
}

TEST_CASE("an option of create that stands behind the program is said to be the program's") {
    const Manager manager;
    const auto create = [&](const std::string& name, const std::string& argument) {
        return manager
            .run({"create", "command", name, "--runner", KORVANE_TEST_RUNNER, aProgram, argument})
            .error;
    };
    CHECK(says(create("One", "--terminal"), "\"--terminal\" stands behind the program"));
    CHECK_FALSE(contains(create("Two", "--terminals"), "stands behind"));
    CHECK_FALSE(contains(create("Three", "-h"), "stands behind"));
}

} // namespace korvane::test
