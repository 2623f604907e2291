#include "Manager.h"

namespace korvane::test {

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

TEST_CASE("an icon that does not exist is refused") {
    const Manager manager;
    CHECK(says(manager.refusal({"create", "command", "n", "--icon", "nope.png", aProgram}),
               "The icon is no file: " + (manager.tmp / "nope.png")));
}

} // namespace korvane::test
