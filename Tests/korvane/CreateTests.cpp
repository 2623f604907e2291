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

/// Everything that the manager could have touched.
std::multiset<std::string> everything(const Manager& manager) {
    return snapshot(manager.tmp.path());
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

TEST_CASE("arguments replace those of the engine or follow them") {
    const Manager manager;
    manager.installApp("App", "org.chromium.chromium");
    const std::string engine = "--user-data-dir={{instanceHome}}/KorvaneData";

    const auto argsOf = [&](const std::string& name, Strings words) {
        words.insert(words.begin(), {"app", name, "App"});
        return manager.configOf(manager.create(words)).extraArgs;
    };

    CHECK(argsOf("a", {"--no-profile"}) == Strings{engine});
    CHECK(argsOf("b", {"--no-profile", "--add-arg", "--incognito", "--add-arg=x"}) ==
          Strings{engine, "--incognito", "x"});
    CHECK(argsOf("c", {"--arg", "-y", "--add-arg", "z"}) == Strings{"-y", "z"});
    CHECK(argsOf("d", {"--arg", "[a,b]", "--arg", "{}", "--arg", "", "--arg=--"}) ==
          Strings{"[a,b]", "{}", "", "--"});
}

TEST_CASE("an empty folder is wrong usage and never the current one") {
    const Manager manager;
    for (const std::string option : {"--output", "--home", "--working-directory", "--runner"}) {
        CAPTURE(option);
        const auto done = manager.run({"create", "command", "Work", aProgram, option, ""});
        CHECK(done.status == 2);
    }
    CHECK_FALSE(isThere(manager.applications()));
}

TEST_CASE("a flag that the kind does not use is told, with the place for a command's arguments") {
    const Manager manager;

    const auto done = manager.run({"create", "command", "Work", "/bin/echo", "--arg", "x"});

    CHECK(done.status == 0);
    CHECK(says(done.error, "--arg"));
    CHECK(says(done.error, "behind \"--\""));
}

TEST_CASE("a home behind a missing folder and back is used") {
    const Manager manager;
    makeFolder(manager.home / "Data");

    CHECK(manager.run({"create", "command", "Work", aProgram, "--home", "~/x/../Data"}).status ==
          0);

    CHECK(isThere(manager.home / "Data"));
}

TEST_CASE("every field of the request is a flag") {
    const Manager manager;
    manager.installApp("App", "org.example.app");
    const auto icon = writeFile(manager.tmp / "icon.icns", "icns picture");

    const auto bundle = manager.create({"app",
                                        "Work",
                                        "App",
                                        "--home",
                                        "~/h/",
                                        "--output",
                                        manager.tmp / "out",
                                        "--bundle-id",
                                        "org.example.work",
                                        "--strategy",
                                        "wrapper-identity",
                                        "--icon",
                                        icon,
                                        "--hide-icon",
                                        "--env",
                                        "A=1=2",
                                        "--env",
                                        "B=",
                                        "--plist",
                                        "Key=yes",
                                        "--working-directory",
                                        "dir",
                                        "--browser",
                                        "--open-with",
                                        "--label",
                                        "W",
                                        "--menu-bar",
                                        "--menu-bar-template",
                                        "--no-share-folders"});

    CHECK(bundle == manager.tmp / "out/Work.app");
    const auto config = manager.configOf(bundle);
    CHECK(config.instanceHome == "~/h");
    CHECK(config.bundleId == "org.example.work");
    CHECK(config.strategy == ambrel::Strategy::wrapperIdentity);
    CHECK(config.environment ==
          ambrel::StringMap{{"A", "1=2"}, {"B", ""}, {"GSETTINGS_BACKEND", "keyfile"}});
    CHECK(config.infoPlistOverrides == ambrel::StringMap{{"Key", "yes"}});
    CHECK(config.workingDirectory == manager.tmp / "dir");
    CHECK(config.registerAsBrowser);
    CHECK(config.openWithPassthrough);
    CHECK((config.iconLabel ==
           ambrel::IconLabel{"W", "FFFFFF", ambrel::IconLabel::Position::bottom}));
    CHECK(config.menuBarIcon);
    CHECK(config.menuBarIconTemplate);
    CHECK_FALSE(config.shareUserFolders);
    CHECK(readFile(bundle + "/Contents/Resources/AppIcon.icns") == "icns picture");
    CHECK(ambrel::readPropertyList(bundle + "/Contents/Info.plist")
              ->at("LSUIElement")
              .exactBoolean() == true);
}

TEST_CASE("a label has the color and position that are given") {
    const Manager manager;

    const auto bundle = manager.create({"command", "Work", aProgram, "--label", "x",
                                        "--label-color", "#aa00FF", "--label-position", "top"});

    CHECK((manager.configOf(bundle).iconLabel ==
           ambrel::IconLabel{"x", "#aa00FF", ambrel::IconLabel::Position::top}));
}

TEST_CASE("values that are none of an option's are wrong usage") {
    const Manager manager;
    for (const Strings& more :
         {Strings{"--strategy", "Home-Override"}, Strings{"--label-color", "FFFFFF"},
          Strings{"--label", "x", "--label-color", "red"},
          Strings{"--label", "x", "--label-position", "left"}, Strings{"--env", "A"},
          Strings{"--env", "=1"}, Strings{"--plist", "x"}, Strings{"--bundle-id", ""},
          Strings{"--home", ""}, Strings{"--home", "a", "--home", "b"}}) {
        CAPTURE(more);
        Strings words{"create", "command", "Work", aProgram};
        words.insert(words.end(), more.begin(), more.end());
        manager.refusal(words, 2);
    }
    CHECK(namesIn(manager.home.path()) == Strings{});
}

TEST_CASE("paths are stored absolute, and a leading tilde is kept") {
    const Manager manager;
    writeFile(manager.tmp / "doc.pdf");

    const auto relative = manager.configOf(manager.create({"file", "a", "doc.pdf", "--home", "h"}));
    const auto tilde = manager.configOf(manager.create({"file", "b", "~/doc.pdf"}));
    const auto program = manager.configOf(manager.create({"command", "c", "./tool"}));

    CHECK(relative.openPath == manager.tmp / "doc.pdf");
    CHECK(relative.instanceHome == manager.tmp / "h");
    CHECK(tilde.openPath == "~/doc.pdf");
    CHECK(program.commandPath == manager.tmp / "tool");
}

TEST_CASE("a bare command name is looked up in PATH now") {
    const Manager manager;
    writeScript(manager.tmp / "bin/tool", "");
    writeFile(manager.tmp / "first/tool", "not to be run");
    const std::string path = (manager.tmp / "first") + ":" + (manager.tmp / "bin");

    const auto done = manager.run(
        {"create", "command", "c", "tool", "--runner", KORVANE_TEST_RUNNER}, {{"PATH", path}});

    CHECK(done.status == 0);
    CHECK(manager.configOf(manager.applications() + "/c.app").commandPath ==
          manager.tmp / "bin/tool");
    CHECK(says(manager.refusal({"create", "command", "d", "no-such-tool"}),
               "No program called \"no-such-tool\""));
}

TEST_CASE("the arguments of a command stand behind two dashes, byte for byte") {
    const Manager manager;

    const auto bundle = manager.create({"command", "c", aProgram, "--env", "A=1", "--", "-x", "--",
                                        "[a,b]", "{}", "", "--help", "a=b="});

    CHECK(manager.configOf(bundle).commandArgs ==
          Strings{"-x", "--", "[a,b]", "{}", "", "--help", "a=b="});
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
            manager.create({"command", name, aProgram, "--bundle-id", "id." + name});
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
                                 Strings{"command", "n", aProgram, "--", bad},
                                 Strings{"command", "n", aProgram, "--env", "A=" + bad},
                                 Strings{"command", "n", aProgram, "--plist", bad + "=1"},
                                 Strings{"command", "n", aProgram, "--home", bad},
                                 Strings{"command", "n", aProgram, "--output", bad},
                                 Strings{"command", "n", aProgram, "--bundle-id", bad},
                                 Strings{"command", "n", aProgram, "--label", bad},
                                 Strings{"command", "n", aProgram, "--working-directory", bad},
                                 Strings{"command", "n", aProgram, "--arg", bad},
                                 Strings{"command", "n", aProgram, "--add-arg", bad}}) {
        CAPTURE(words);
        Strings whole{"create"};
        whole.insert(whole.end(), words.begin(), words.end());
        CHECK(says(manager.refusal(whole), "is not UTF-8"));
    }
    CHECK(namesIn(manager.home.path()) == Strings{});
    CHECK(namesIn(manager.tmp.path()) == Strings{"data", "share", "user"});
}

TEST_CASE("an icon that does not exist is refused") {
    const Manager manager;
    CHECK(says(manager.refusal({"create", "command", "n", aProgram, "--icon", "nope.png"}),
               "The icon is no file: " + (manager.tmp / "nope.png")));
}

TEST_CASE("an existing wrapper is refused without --replace, and nothing changes") {
    const Manager manager;
    manager.create({"command", "Work", aProgram});
    const auto before = everything(manager);

    const auto error = manager.refusal({"create", "command", "Work", "/bin/false"});

    CHECK(says(error, "--replace"));
    CHECK(everything(manager) == before);
}

TEST_CASE("what is no wrapper of ours is never replaced") {
    const Manager manager;
    const auto place = manager.applications() + "/Work.app";
    SUBCASE("an application") { manager.installApp("Work", "org.example.work"); }
    SUBCASE("an empty folder") { makeFolder(place); }
    SUBCASE("a file") { writeFile(place); }
    SUBCASE("a dangling link") {
        makeFolder(manager.applications());
        makeLink(place, "/nowhere");
    }
    SUBCASE("a link to a wrapper") {
        makeFolder(manager.applications());
        makeLink(place, manager.create({"command", "Other", aProgram, "--output",
                                        manager.tmp / "out", "--bundle-id", "o"}));
    }
    SUBCASE("a folder with a broken configuration") {
        writeFile(place + "/Contents/Resources/instance.json", "{");
    }
    const auto before = everything(manager);

    const auto plain = manager.refusal({"create", "command", "Work", aProgram});
    const auto replacing = manager.refusal({"create", "command", "Work", aProgram, "--replace"});

    CHECK(says(plain, "is no instance"));
    CHECK(says(replacing, "is no instance"));
    CHECK(everything(manager) == before);
}

TEST_CASE("--replace puts the new wrapper in place of the old one and leaves no remains") {
    const Manager manager;
    const auto bundle = manager.create({"command", "Work", aProgram, "--env", "OLD=1"});
    writeFile(bundle + "/Contents/old");
    writeFile(manager.instanceHome("Work") + "/data", "kept");

    const auto done = manager.run({"create", "command", "Work", "/bin/false", "--replace", "--home",
                                   "~/other", "--runner", KORVANE_TEST_RUNNER});

    CHECK(done.status == 0);
    CHECK(done.output == bundle + "\n");
    CHECK(says(done.error, "The replaced instance's data stays in ~/KorvaneInstances/Work."));
    CHECK(manager.configOf(bundle).commandPath == "/bin/false");
    CHECK_FALSE(isThere(bundle + "/Contents/old"));
    CHECK(namesIn(manager.applications()) == Strings{"Work.app"});
    CHECK(readFile(manager.instanceHome("Work") + "/data") == "kept");
}

TEST_CASE("--replace makes a wrapper that was not there") {
    const Manager manager;
    CHECK(isRealFolder(manager.create({"command", "Work", aProgram, "--replace"})));
}

TEST_CASE("a failed creation keeps the old wrapper and leaves no remains") {
    const Manager manager;
    manager.create({"command", "Work", aProgram});
    const auto before = everything(manager);
    const Strings base{"create", "command", "Work", aProgram, "--replace"};
    const auto refusedWith = [&](const Strings& more) {
        auto words = base;
        words.insert(words.end(), more.begin(), more.end());
        CHECK(manager.run(words).status == 1);
        CHECK(everything(manager) == before);
    };

    refusedWith({"--runner", manager.tmp / "no-runner"});
    refusedWith({"--runner", KORVANE_TEST_RUNNER, "--plist", "Key=\x01"}); // not for XML
    refusedWith({"--runner", KORVANE_TEST_RUNNER, "--home", "/dev/null/x"});
    refusedWith({"--runner", KORVANE_TEST_RUNNER, "--home", "~/new/home", "--plist", "K=\x02"});
}

TEST_CASE("a failed first creation leaves nothing behind") {
    const Manager manager;

    const auto done =
        manager.run({"create", "command", "Work", aProgram, "--output", manager.tmp / "new/out",
                     "--plist", "K=\x01", "--runner", KORVANE_TEST_RUNNER});

    CHECK(done.status == 1);
    CHECK(done.output.empty());
    CHECK_FALSE(isThere(manager.tmp / "new"));
    CHECK(namesIn(manager.home.path()) == Strings{});
}

TEST_CASE("a bundle identifier of another instance is refused, whatever the case") {
    const Manager manager;
    manager.create({"command", "Work", aProgram});
    const auto before = everything(manager);

    const auto same = manager.refusal({"create", "command", "work", aProgram});
    const auto given = manager.refusal(
        {"create", "command", "Other", aProgram, "--bundle-id", "APP.korvane.instance.work"});

    for (const auto& error : {same, given}) {
        CHECK(says(error, "belongs to the instance \"Work\""));
        CHECK(says(error, "--bundle-id"));
    }
    CHECK(everything(manager) == before);
}

TEST_CASE("a bundle identifier of an instance in the output folder is refused") {
    const Manager manager;
    manager.create({"command", "Work", aProgram, "--output", manager.tmp / "out"});

    CHECK(says(manager.refusal({"create", "command", "Other", aProgram, "--output",
                                manager.tmp / "out", "--bundle-id", "app.korvane.instance.work"}),
               "belongs to the instance \"Work\""));
}

TEST_CASE("a home of another instance is refused, whatever path leads there") {
    const Manager manager;
    manager.create({"command", "Work", aProgram});
    makeLink(manager.tmp / "link", manager.instanceHome("Work"));

    for (const std::string home : {"~/KorvaneInstances/Work", "~/KorvaneInstances/./Work/",
                                   "~/KorvaneInstances/x/../Work"}) {
        CAPTURE(home);
        const auto error =
            manager.refusal({"create", "command", "Other", aProgram, "--home", home});
        CHECK(says(error, "belongs to the instance \"Work\""));
        CHECK(says(error, "--home"));
    }
    CHECK(says(
        manager.refusal({"create", "command", "Other", aProgram, "--home", manager.tmp / "link"}),
        "belongs to the instance \"Work\""));
}

TEST_CASE("a home of an unknown user is refused") {
    const Manager manager;
    CHECK(says(
        manager.refusal({"create", "command", "n", aProgram, "--home", "~no-such-user-here/x"}),
        "names an unknown user"));
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

TEST_CASE("what the runner cannot host yet is said in one line") {
    const Manager manager;

    const auto web = manager.run(
        {"create", "web", "Site", "https://example.org/", "--runner", KORVANE_TEST_RUNNER});
    const auto menuBar = manager.run(
        {"create", "command", "Bar", aProgram, "--menu-bar", "--runner", KORVANE_TEST_RUNNER});

    CHECK(web.status == 0);
    CHECK(says(web.error, "warning: The runner cannot host web sites yet: "));
    CHECK(menuBar.status == 0);
    CHECK(says(menuBar.error, "warning: The runner cannot host menu-bar items yet: "));
    CHECK(manager.configOf(manager.applications() + "/Site.app").url == "https://example.org/");
}

TEST_CASE("create tells programs the bundle as JSON") {
    const Manager manager;

    const auto made = manager.json(
        {"create", "command", "Work", aProgram, "--json", "--runner", KORVANE_TEST_RUNNER});

    CHECK(made == nlohmann::json{{"bundleURL", manager.applications() + "/Work.app"},
                                 {"profile", nullptr}});
}

TEST_CASE("the new bundle carries its name and identifier") {
    const Manager manager;
    const auto bundle = manager.create({"command", "Ça va", aProgram});

    CHECK(plistString(bundle, "CFBundleName") == "Ça va");
    CHECK(plistString(bundle, "CFBundleIdentifier") == "app.korvane.instance.ça-va");
}

} // namespace korvane::test
