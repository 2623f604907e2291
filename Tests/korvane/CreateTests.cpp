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
        const auto done = manager.run({"create", "command", "Work", option, "", aProgram});
        CHECK(done.status == 2);
    }
    CHECK_FALSE(isThere(manager.applications()));
}

TEST_CASE("an option that another kind has is refused with the kind that has it") {
    const Manager manager;
    struct Row {
        std::string kind;
        Strings option;
        std::string owners;
    };
    const Row rows[] = {
        {"command", {"--strategy", "unsupported"}, "a command: it belongs to: korvane create app"},
        {"command",
         {"--no-share-folders"},
         "a command: it belongs to: korvane create app, korvane create web"},
        {"command", {"--arg", "x"}, "a command: its arguments stand behind PROGRAM."},
        {"command", {"--open-with"}, "a command: it belongs to: korvane create app"},
        {"app", {"--terminal"}, "an application: it belongs to: korvane create command"},
        {"app", {"--working-directory=x"}, "an application: it belongs to: korvane create command"},
        {"web",
         {"--env", "A=1"},
         "a web site: it belongs to: korvane create app, korvane create command"},
        {"file",
         {"--home", "x"},
         "a document: it belongs to: korvane create app, korvane create web, "
         "korvane create command"},
    };
    for (const auto& row : rows) {
        CAPTURE(row.option);
        Strings words{"create", row.kind, "Work"};
        words.insert(words.end(), row.option.begin(), row.option.end());
        words.push_back(aProgram);
        const auto option = row.option.front().substr(0, row.option.front().find('='));
        CHECK(says(manager.refusal(words, 2), option + " means nothing to " + row.owners));
        CHECK_FALSE(contains(manager.result({"create", row.kind, "--help"}), option + " "));
    }
    CHECK(namesIn(manager.home.path()) == Strings{});
}

TEST_CASE("where there is no Dock nothing can be hidden from it") {
    const Manager manager;
    for (const std::string kind : {"app", "web", "file", "command"}) {
        CAPTURE(kind);
        const auto error = manager.refusal({"create", kind, "Work", "--hide-icon", aProgram}, 2);
        CHECK(says(error, "--hide-icon means nothing on this system"));
        CHECK(says(error, "korvane unregister NAME"));
        CHECK_FALSE(contains(manager.result({"create", kind, "--help"}), "--hide-icon"));
    }
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

TEST_CASE("every field of a request for an application is an option") {
    const Manager manager;
    AppBundleBuilder(manager.applications() + "/App.app")
        .identifier("org.example.app")
        .entry("KorvaneMimeTypes", "<string>text/plain;text/html;</string>")
        .write();
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
                                        "--env",
                                        "A=1=2",
                                        "--env",
                                        "B=",
                                        "--plist",
                                        "Key=yes",
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
    CHECK(config.registerAsBrowser);
    CHECK(config.openWithPassthrough);
    CHECK((config.iconLabel ==
           ambrel::IconLabel{"W", "FFFFFF", ambrel::IconLabel::Position::bottom}));
    CHECK(config.menuBarIcon);
    CHECK(config.menuBarIconTemplate);
    CHECK_FALSE(config.shareUserFolders);
    CHECK(readFile(bundle + "/Contents/Resources/AppIcon.icns") == "icns picture");
}

TEST_CASE("a command runs in its own folder and with its own variables") {
    const Manager manager;

    const auto config = manager.configOf(manager.create(
        {"command", "Work", "--working-directory", "dir", "--env", "A=1", aProgram}));

    CHECK(config.workingDirectory == manager.tmp / "dir");
    CHECK(config.environment == ambrel::StringMap{{"A", "1"}});
}

TEST_CASE("a label of blanks is none") {
    const Manager manager;

    const auto done = manager.run({"create", "command", "Work", "--label", " \t ", "--runner",
                                   KORVANE_TEST_RUNNER, aProgram});

    CHECK(done.status == 0);
    CHECK_FALSE(says(done.error, "label"));
    CHECK_FALSE(manager.configOf(manager.applications() + "/Work.app").iconLabel);
}

TEST_CASE("a label has the color and position that are given") {
    const Manager manager;

    const auto bundle = manager.create({"command", "Work", "--label", "x", "--label-color",
                                        "#aa00FF", "--label-position", "top", aProgram});

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
        Strings words{"create", "command", "Work"};
        words.insert(words.end(), more.begin(), more.end());
        words.push_back(aProgram);
        manager.refusal(words, 2);
    }
    CHECK(namesIn(manager.home.path()) == Strings{});
}

TEST_CASE("paths are stored absolute, and a leading tilde is kept") {
    const Manager manager;
    writeFile(manager.tmp / "doc.pdf");
    writeScript(manager.tmp / "tool", "");

    const auto relative = manager.configOf(manager.create({"file", "a", "doc.pdf"}));
    const auto tilde = manager.configOf(manager.create({"file", "b", "~/doc.pdf"}));
    const auto program =
        manager.configOf(manager.create({"command", "c", "--home", "h", "./tool"}));

    CHECK(relative.openPath == manager.tmp / "doc.pdf");
    CHECK(tilde.openPath == "~/doc.pdf");
    CHECK(program.commandPath == manager.tmp / "tool");
    CHECK(program.instanceHome == manager.tmp / "h");
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

TEST_CASE("a program that cannot be run is refused, by its path too") {
    const Manager manager;
    const auto plain = writeFile(manager.tmp / "plain", "not to be run");

    CHECK(says(manager.refusal({"create", "command", "c", "./gone"}),
               manager.tmp / "gone" + " does not exist."));
    CHECK(says(manager.refusal({"create", "command", "c", plain}),
               plain + " is no program that can be run."));
    CHECK(says(manager.refusal({"create", "command", "c", "/tmp"}), "/tmp is no program"));
    CHECK(namesIn(manager.home.path()) == Strings{});
}

TEST_CASE("all behind the program is its own, byte for byte") {
    const Manager manager;
    const Strings words{"-a", "--env", "A=1", "--", "[a,b]", "{}", "", "--help", "a=b=", "--x="};
    const auto argsOf = [&](const std::string& name, Strings before) {
        before.insert(before.begin(), {"command", name, "--env", "B=2", aProgram});
        before.insert(before.end(), words.begin(), words.end());
        const auto config = manager.configOf(manager.create(before));
        CHECK(config.environment == ambrel::StringMap{{"B", "2"}});
        return config.commandArgs;
    };

    CHECK(argsOf("plain", {}) == words);
    CHECK(argsOf("dashed", {"--"}) == words); // as it had to be written before
}

TEST_CASE("a command can be opened in a terminal") {
    const Manager manager;
    const auto terminal = writeScript(manager.tmp / "bin/xterm", "");
    const Strings words{"create", "command", "Top", "--terminal", "--runner", KORVANE_TEST_RUNNER,
                        aProgram, "-d",      "1"};

    const auto done = manager.run(words, {{"PATH", manager.tmp / "bin"}});
    REQUIRE(done.status == 0);
    const auto config = manager.configOf(manager.applications() + "/Top.app");

    CHECK(config.commandPath == terminal);
    CHECK(config.commandArgs == Strings{"-e", aProgram, "-d", "1"});
}

TEST_CASE("without a terminal nothing is opened in one") {
    const Manager manager;

    const auto done = manager.run({"create", "command", "Top", "--terminal", aProgram},
                                  {{"PATH", manager.tmp.path()}});

    CHECK(done.status == 1);
    CHECK(says(done.error, "There is no terminal to open it in"));
    CHECK(namesIn(manager.home.path()) == Strings{});
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

TEST_CASE("an icon that does not exist is refused") {
    const Manager manager;
    CHECK(says(manager.refusal({"create", "command", "n", "--icon", "nope.png", aProgram}),
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
        makeLink(place, manager.create({"command", "Other", "--output", manager.tmp / "out",
                                        "--bundle-id", "o", aProgram}));
    }
    SUBCASE("a folder with a broken configuration") {
        writeFile(place + "/Contents/Resources/instance.json", "{");
    }
    const auto before = everything(manager);

    const auto plain = manager.refusal({"create", "command", "Work", aProgram});
    const auto replacing = manager.refusal({"create", "command", "Work", "--replace", aProgram});

    CHECK(says(plain, "is no instance"));
    CHECK(says(replacing, "is no instance"));
    CHECK(everything(manager) == before);
}

TEST_CASE("--replace puts the new wrapper in place of the old one and leaves no remains") {
    const Manager manager;
    const auto bundle = manager.create({"command", "Work", "--env", "OLD=1", aProgram});
    writeFile(bundle + "/Contents/old");
    writeFile(manager.instanceHome("Work") + "/data", "kept");

    const auto done = manager.run({"create", "command", "Work", "--replace", "--home", "~/other",
                                   "--runner", KORVANE_TEST_RUNNER, "/bin/false"});

    CHECK(done.status == 0);
    CHECK(done.output == bundle + "\n");
    CHECK(says(done.error, "The replaced instance's data stays in ~/KorvaneInstances/Work."));
    CHECK(manager.configOf(bundle).commandPath == "/bin/false");
    CHECK_FALSE(isThere(bundle + "/Contents/old"));
    CHECK(namesIn(manager.applications()) == Strings{"Work.app"});
    CHECK(readFile(manager.instanceHome("Work") + "/data") == "kept");
}

TEST_CASE("--replace keeps what is not given, and tells of it") {
    const Manager manager;
    const auto bundle = manager.create({"command", "Work", "--env", "A=1", "--env", "B=2", "--home",
                                        "~/h", "--bundle-id", "org.example.w", "--label", "W",
                                        "--working-directory", "/tmp", aProgram});

    const auto done = manager.run({"create", "command", "Work", "--replace", "--env", "B=3",
                                   "--runner", KORVANE_TEST_RUNNER, "/bin/false"});

    CHECK(done.status == 0);
    CHECK(says(done.error, "Kept of what was there: its home, its identifier, its working "
                           "directory, its label, the variable A."));
    const auto config = manager.configOf(bundle);
    CHECK(config.environment == ambrel::StringMap{{"A", "1"}, {"B", "3"}});
    CHECK(config.instanceHome == "~/h");
    CHECK(config.bundleId == "org.example.w");
    CHECK(config.workingDirectory == "/tmp");
    REQUIRE(config.iconLabel);
    CHECK(config.iconLabel->text == "W");
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

TEST_CASE("--replace makes a wrapper that was not there") {
    const Manager manager;
    CHECK(isRealFolder(manager.create({"command", "Work", "--replace", aProgram})));
}

TEST_CASE("a failed creation keeps the old wrapper and leaves no remains") {
    const Manager manager;
    manager.create({"command", "Work", aProgram});
    const auto before = everything(manager);
    const Strings base{"create", "command", "Work", "--replace"};
    const auto refusedWith = [&](const Strings& more) {
        auto words = base;
        words.insert(words.end(), more.begin(), more.end());
        words.push_back(aProgram);
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

    const auto done = manager.run({"create", "command", "Work", "--output", manager.tmp / "new/out",
                                   "--plist", "K=\x01", "--runner", KORVANE_TEST_RUNNER, aProgram});

    CHECK(done.status == 1);
    CHECK(done.output.empty());
    CHECK_FALSE(isThere(manager.tmp / "new"));
    CHECK(namesIn(manager.home.path()) == Strings{});
}

TEST_CASE("a bundle identifier of another instance is refused, whatever the case") {
    const Manager manager;
    manager.create({"command", "Work", aProgram});
    const auto before = everything(manager);

    const auto error = manager.refusal(
        {"create", "command", "Other", "--bundle-id", "APP.korvane.instance.work", aProgram});

    CHECK(says(error, "belongs to the instance \"Work\""));
    CHECK(says(error, "--bundle-id"));
    CHECK(everything(manager) == before);
}

TEST_CASE("names that come to one identifier are told apart by a counter") {
    const Manager manager;
    const auto idOf = [&](const std::string& name) {
        return manager.configOf(manager.create({"command", name, aProgram})).bundleId;
    };

    CHECK(idOf("a b") == "app.korvane.instance.a-b");
    CHECK(idOf("a-b") == "app.korvane.instance.a-b-2");
    CHECK(idOf("A B") == "app.korvane.instance.a-b-3");
    CHECK(idOf("🙂") == "app.korvane.instance.-");
    CHECK(idOf("🙃") == "app.korvane.instance.--2");
    // So is the desktop entry of somebody else.
    writeFile(manager.tmp / "share/applications/app.korvane.instance.mail.desktop",
              "[Desktop Entry]\nType=Application\nName=Mail\nExec=/bin/true\n");
    CHECK(idOf("Mail") == "app.korvane.instance.mail-2");
}

TEST_CASE("a bundle identifier of an instance in the output folder is refused") {
    const Manager manager;
    manager.create({"command", "Work", "--output", manager.tmp / "out", aProgram});

    CHECK(says(manager.refusal({"create", "command", "Other", "--output", manager.tmp / "out",
                                "--bundle-id", "app.korvane.instance.work", aProgram}),
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
            manager.refusal({"create", "command", "Other", "--home", home, aProgram});
        CHECK(says(error, "belongs to the instance \"Work\""));
        CHECK(says(error, "--home"));
    }
    CHECK(says(
        manager.refusal({"create", "command", "Other", "--home", manager.tmp / "link", aProgram}),
        "belongs to the instance \"Work\""));
}

TEST_CASE("a home of an unknown user is refused") {
    const Manager manager;
    CHECK(says(
        manager.refusal({"create", "command", "n", "--home", "~no-such-user-here/x", aProgram}),
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

    const auto menuBar = manager.run(
        {"create", "command", "Bar", "--menu-bar", "--runner", KORVANE_TEST_RUNNER, aProgram});

    CHECK(menuBar.status == 0);
    CHECK(says(menuBar.error, "warning: The runner cannot host menu-bar items yet: "));
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
