#include "Manager.h"

#include "Ambrel/Instance/ConfigFields.h"
#include "korvane/Verbs/ConfigEdit.h"

#include <algorithm>
#include <sys/stat.h>

namespace korvane::test {

namespace {

/// A manager with one command instance called Work.
struct Fixture {
    Manager manager;
    Path bundle = manager.create({"command", "Work", "--env", "A=1", aProgram, "--", "x"});

    Path file() const { return bundle + "/Contents/Resources/instance.json"; }
    ambrel::InstanceConfig config() const { return manager.configOf(bundle); }
    ambrel::InstanceConfig after(Strings words) const {
        words.insert(words.begin(), {"edit", "Work"});
        manager.result(words);
        return config();
    }
};

} // namespace

TEST_CASE("a Boolean, a list and a map are given as JSON") {
    const Fixture fixture;

    const auto config =
        fixture.after({"--set", "menuBarIcon=true", "--set", R"(commandArgs=["-x", "a=b", "ç"])",
                       "--set", R"(environment={"B": "2"})"});

    CHECK(config.menuBarIcon);
    CHECK(config.commandArgs == Strings{"-x", "a=b", "ç"});
    CHECK(config.environment == ambrel::StringMap{{"B", "2"}});
    CHECK(fixture.after({"--set", "commandArgs=[]"}).commandArgs == Strings{});
}

TEST_CASE("other fields are plain text, and paths become absolute") {
    const Fixture fixture;
    const auto& manager = fixture.manager;
    manager.installApp("Mail", "org.example.mail");
    manager.create({"web", "Site", "https://example.org/"});
    const auto app = manager.create({"app", "App", "Mail"});

    const auto config =
        fixture.after({"--set", "commandPath=~/tool", "--set", "workingDirectory=sub"});
    manager.result({"edit", "Site", "--set", "url=https://example.org/?a=b"});
    manager.result(
        {"edit", "App", "--set", "strategy=wrapper-identity", "--set", "targetAppPath=~/Mail.app"});

    CHECK(config.commandPath == "~/tool");
    CHECK(config.workingDirectory == manager.tmp / "sub");
    CHECK(manager.configOf(manager.applications() + "/Site.app").url == "https://example.org/?a=b");
    CHECK(manager.configOf(app).strategy == ambrel::Strategy::wrapperIdentity);
    CHECK(manager.configOf(app).targetAppPath == manager.home / "Mail.app");
}

TEST_CASE("a web instance keeps its address where the new one is none") {
    const Manager manager;
    manager.create({"web", "Site", "https://example.org/"});

    CHECK(says(manager.refusal({"edit", "Site", "--set", "url=https://"}),
               "\"https://\" is no address of a web site: it names no host, such as "
               "mail.example.org."));
    CHECK(says(manager.refusal({"edit", "Site", "--set", "url="}), "there is nothing in it."));
    CHECK(manager.configOf(manager.applications() + "/Site.app").url == "https://example.org/");
    manager.result({"edit", "Site", "--set", "url= example.org/b "});
    CHECK(manager.configOf(manager.applications() + "/Site.app").url == " example.org/b ");
}

TEST_CASE("a field that the kind does not heed is refused with the kind that does") {
    const Fixture fixture;
    const auto before = readFile(fixture.file());
    struct Row {
        std::string assignment, sentence;
    };
    const Row rows[] = {
        {"url=x", "url means nothing to an instance of the kind command: it is for the kind web."},
        {"extraArgs=[]", "it is for the kind app."},
        {"strategy=home-override", "it is for the kind app."},
        {"infoPlistOverrides.KorvaneProcessName=x", "it is for the kind app."},
        {"openPath=x", "it is for the kind file."},
    };
    for (const auto& row : rows) {
        CAPTURE(row.assignment);
        CHECK(
            says(fixture.manager.refusal({"edit", "Work", "--set", row.assignment}), row.sentence));
    }
    CHECK(says(fixture.manager.refusal({"edit", "Work", "--set", "kind=app"}),
               "Create the instance again instead, with --replace"));
    CHECK(readFile(fixture.file()) == before);
}

TEST_CASE("arguments and variables are added and taken away one by one") {
    const Fixture fixture;

    auto config = fixture.after({"--add-arg", "--new", "--add-arg", "y z", "--env", "B=1=2"});
    CHECK(config.commandArgs == Strings{"x", "--new", "y z"});
    CHECK(config.environment == ambrel::StringMap{{"A", "1"}, {"B", "1=2"}});
    config = fixture.after({"--remove-arg", "x", "--remove-arg=--new", "--env", "A=2"});
    CHECK(config.commandArgs == Strings{"y z"});
    CHECK(config.environment == ambrel::StringMap{{"A", "2"}, {"B", "1=2"}});

    CHECK(says(fixture.manager.refusal({"edit", "Work", "--remove-arg", "nope"}),
               "not started with the argument \"nope\""));
    fixture.manager.refusal({"edit", "Work", "--env", "A"}, 2);
    fixture.manager.create({"file", "Paper", "/tmp"});
    CHECK(says(fixture.manager.refusal({"edit", "Paper", "--add-arg", "x"}),
               "--add-arg means nothing to an instance of the kind file"));
}

TEST_CASE("arguments that keep an instance apart go with a warning, and come back") {
    const Manager manager;
    manager.installApp("App", "org.mozilla.firefox");
    const auto bundle = manager.create({"app", "Work", "App"});
    const auto before = manager.configOf(bundle);

    const auto done = manager.run({"edit", "Work", "--set", R"(extraArgs=["--incognito"])"});
    CHECK(done.status == 0);
    CHECK(says(done.error, "warning: It is no longer started with what was worked out"));
    CHECK(says(done.error, "Get them back with: korvane edit Work --unset extraArgs"));
    CHECK(manager.configOf(bundle).extraArgs == Strings{"--incognito"});

    const auto back = manager.run({"edit", "Work", "--unset", "extraArgs"});
    CHECK(back.status == 0);
    CHECK_FALSE(contains(back.error, "warning"));
    CHECK(manager.configOf(bundle).extraArgs == before.extraArgs);
    manager.result({"edit", "Work", "--set", "environment={}"});
    manager.result({"edit", "Work", "--unset", "environment"});
    CHECK(manager.configOf(bundle).environment == before.environment);

    const auto help = manager.result({"edit", "--help"});
    CHECK_FALSE(contains(help, "--unset extraArgs"));
    CHECK_FALSE(contains(help, "extraArgs="));
}

TEST_CASE("a new name is taken in one step with all that bears it") {
    const Fixture fixture;
    const auto& manager = fixture.manager;
    const auto data = manager.home / ".local/share";
    const auto entry = data + "/applications/app.korvane.instance.work.desktop";

    const auto done = manager.run({"edit", "Work", "--name", "New Name"});

    CHECK(done.status == 0);
    const auto bundle = manager.applications() + "/New Name.app";
    CHECK(says(done.error,
               "Changed \"Work\", which is called \"New Name\" now and stands at " + bundle + "."));
    CHECK(says(done.error, "See it with: korvane show 'New Name'"));
    CHECK_FALSE(isThere(fixture.bundle));
    CHECK(contains(readFile(entry), "X-Korvane-Bundle=" + bundle + "\n"));
    CHECK(contains(readFile(data + "/korvane/open/app.korvane.instance.work"), bundle));
    CHECK(manager.run({"run", "New Name"}).status == 0);
    manager.create({"command", "Other", aProgram});
    CHECK(says(manager.refusal({"edit", "New Name", "--name", "Other"}), "Choose another name"));
    CHECK(says(manager.refusal({"edit", "New Name", "--set", "displayName=x"}),
               "korvane edit NAME --name"));
}

TEST_CASE("a label of blanks is none, in an edit as in a creation") {
    const Fixture fixture;

    CHECK(fixture.after({"--label", "A", "--label-position", "top"}).iconLabel ==
          ambrel::IconLabel{"A", "FFFFFF", ambrel::IconLabel::Position::top});
    CHECK(fixture.after({"--label-color", "FF0000"}).iconLabel ==
          ambrel::IconLabel{"A", "FF0000", ambrel::IconLabel::Position::top});
    CHECK_FALSE(fixture.after({"--label", " \t "}).iconLabel);
    CHECK(says(fixture.manager.refusal({"edit", "Work", "--label-color", "FF0000"}, 2),
               "want a label"));
}

TEST_CASE("one variable of the environment is set and taken out") {
    const Fixture fixture;

    CHECK(fixture.after({"--set", "environment.B.C=1=2", "--set", "environment.D="}).environment ==
          ambrel::StringMap{{"A", "1"}, {"B.C", "1=2"}, {"D", ""}});
    CHECK(fixture.after({"--unset", "environment.A", "--unset", "environment.D"}).environment ==
          ambrel::StringMap{{"B.C", "1=2"}});
    CHECK(says(fixture.manager.refusal({"edit", "Work", "--unset", "environment.A"}),
               "has no entry \"A\""));
}

TEST_CASE("several assignments may follow one option") {
    const Fixture fixture;

    const auto config = fixture.after(
        {"--set", "menuBarIcon=true", "commandPath=/b", "--unset", "environment.A", "commandArgs"});

    CHECK(config.menuBarIcon);
    CHECK(config.commandPath == "/b");
    CHECK(config.environment.empty());
    CHECK(config.commandArgs == Strings{});
}

TEST_CASE("unsetting gives the default of the file") {
    const Fixture fixture;
    const auto& manager = fixture.manager;
    manager.installApp("Mail", "org.example.mail");
    const auto app = manager.create(
        {"app", "App", "Mail", "--no-share-folders", "--strategy", "unsupported", "--menu-bar"});

    manager.result({"edit", "App", "--unset", "shareUserFolders", "strategy", "menuBarIcon"});
    const auto config = fixture.after({"--unset", "commandPath", "commandArgs", "environment"});

    CHECK(manager.configOf(app).shareUserFolders);
    CHECK(manager.configOf(app).strategy == ambrel::Strategy::homeOverride);
    CHECK_FALSE(manager.configOf(app).menuBarIcon);
    CHECK_FALSE(config.commandPath);
    CHECK(config.commandArgs == Strings{});
    CHECK(config.environment.empty());
}

TEST_CASE("a required field cannot be unset") {
    const Fixture fixture;
    const auto before = readFile(fixture.file());
    for (const std::string key : {"displayName", "bundleId", "instanceHome"}) {
        CHECK(says(fixture.manager.refusal({"edit", "Work", "--unset", key}), "cannot be unset"));
    }
    CHECK(readFile(fixture.file()) == before);
}

TEST_CASE("keys that the bundle carries elsewhere are refused with what to do instead") {
    const Fixture fixture;
    const auto before = readFile(fixture.file());
    for (const std::string key :
         {"kind", "bundleId", "infoPlistOverrides", "infoPlistOverrides.LSUIElement",
          "registerAsBrowser", "openWithPassthrough", "outputDir"}) {
        CAPTURE(key);
        const auto error = fixture.manager.refusal({"edit", "Work", "--set", key + "=x"});
        CHECK(says(error, "Create the instance again instead, "));
    }
    CHECK(readFile(fixture.file()) == before);
}

TEST_CASE("a label is set as JSON, and told of where there is no icon to draw it on") {
    const Fixture fixture;
    const std::string label = R"({"text": "A", "colorHex": "FF0000", "position": "top"})";

    const auto done = fixture.manager.run({"edit", "Work", "--set", "iconLabel=" + label});

    CHECK(done.status == 0);
    CHECK(says(done.error, "There is no icon to draw the label on: give one with --icon"));
    const auto stored = fixture.manager.configOf(fixture.bundle).iconLabel;
    CHECK((stored == ambrel::IconLabel{"A", "FF0000", ambrel::IconLabel::Position::top}));
    CHECK(fixture.manager.run({"edit", "Work", "--unset", "iconLabel"}).status == 0);
    CHECK_FALSE(fixture.manager.configOf(fixture.bundle).iconLabel);
    for (const std::string wrong : {"A", "{}", R"({"text": "A"})"}) {
        CHECK(fixture.manager.run({"edit", "Work", "--set", "iconLabel=" + wrong}).status == 2);
    }
}

TEST_CASE("what is no key or no value of it is wrong usage, and nothing is written") {
    const Fixture fixture;
    const auto before = readFile(fixture.file());
    const std::string deep(100000, '[');
    for (const auto& assignment :
         {std::string("nope=1"), std::string("=1"), std::string("commandPath"),
          std::string("menuBarIcon=1"), std::string("menuBarIcon=yes"),
          std::string("commandArgs=-x"), std::string("commandArgs=[1]"),
          std::string("commandArgs={}"), std::string("environment=[]"),
          std::string(R"(environment={"A":1})"), std::string("environment.=1"),
          std::string("instanceHome="), "commandArgs=" + deep, std::string("commandArgs=1e999")}) {
        CAPTURE(assignment.substr(0, 60));
        fixture.manager.refusal({"edit", "Work", "--set", "menuBarIcon=true", "--set", assignment},
                                2);
    }
    fixture.manager.refusal({"edit", "Work"}, 2);
    fixture.manager.refusal({"edit", "Work", "--set", "commandPath=x", "--unset", "commandPath"},
                            2);
    CHECK(says(fixture.manager.refusal({"edit", "Work", "--set", "iconLable=1"}, 2),
               "Did you mean \"iconLabel\"?"));
    CHECK(says(fixture.manager.refusal({"edit", "Work", "--set", "commandPath=\xff"}),
               "is not UTF-8"));
    CHECK(readFile(fixture.file()) == before);
}

TEST_CASE("every field of the table is one that an edit knows") {
    const Fixture fixture;
    ambrel::forEachField([&](const auto& field) {
        CAPTURE(field.key);
        const auto done = fixture.manager.run({"edit", "Work", "--set", field.key});
        CHECK(done.status == 2);
        const auto error =
            fixture.manager.run({"edit", "Work", "--set", std::string(field.key) + "=\x01"}).error;
        CHECK_FALSE(contains(error, "is no key of an instance"));
        const bool hasOption = !edit::optionFor(field.key).empty();
        const bool again = field.edit.form == ambrel::FieldEdit::Form::byCreatingAgain;
        CHECK(contains(error, "Create the instance again") == (again && !hasOption));
        CHECK(contains(error, "korvane edit NAME --") == hasOption);
        const bool isHeeded = field.kinds.contains(ambrel::ShortcutKind::command);
        CHECK(contains(error, "means nothing to") == (!isHeeded && !again));
    });
}

TEST_CASE("an edit of the process name that could not be written leaves Info.plist as it was") {
    const Manager manager;
    manager.installApp("App", "org.example.app");
    const auto contents = manager.create({"app", "Work", "App"}) + "/Contents";
    const auto before = readFile(contents + "/Info.plist");
    const auto setup = manager.setupAsOrdinaryUser(
        {"edit", "Work", "--set", "infoPlistOverrides.KorvaneProcessName=new"});
    setMode(contents + "/Resources/instance.json", 0444);

    const auto done = run(setup);

    CHECK(done.status == 1);
    CHECK(says(done.error, "nothing was changed"));
    CHECK(readFile(contents + "/Info.plist") == before);
    CHECK(namesIn(contents) == Strings{"Info.plist", "MacOS", "PkgInfo", "Resources"});
}

TEST_CASE("an edit that could not be written fails and leaves the old bytes") {
    const Fixture fixture;
    const auto before = readFile(fixture.file());
    auto setup = fixture.manager.setupAsOrdinaryUser({"edit", "Work", "--set", "commandPath=/x"});

    SUBCASE("a file that may not be written") {
        setMode(fixture.file(), 0444);
        const auto done = run(setup);
        CHECK(done.status == 1);
        CHECK(says(done.error, "nothing was changed"));
    }
    SUBCASE("a write that stops half way") {
        // Two blocks of 512 bytes: enough for the old text, too little for the new one.
        REQUIRE(before.size() < 1024);
        const auto script = std::find(setup.command.begin(), setup.command.end(), "-c") + 1;
        *script = "ulimit -f 2; trap '' XFSZ; exec \"$@\" </dev/null";
        setup.command.back() = "commandPath=/" + std::string(2000, 'x');
        const auto done = run(setup);
        CHECK(done.status == 1);
        CHECK(says(done.error, "nothing was changed"));
    }
    CHECK(readFile(fixture.file()) == before);
}

TEST_CASE("an instance that is named by a link is not renamed by it") {
    const Fixture fixture;
    const auto link = fixture.manager.applications() + "/Link.app";
    makeLink(link, fixture.manager.applications() + "/Work.app");

    const auto text = fixture.manager.refusal({"edit", link, "--name", "Other"});

    CHECK(says(text, link + " is a link"));
    CHECK(isThere(link + "/Contents/Info.plist"));
}

TEST_CASE("an edit exchanges the configuration in one step") {
    const Fixture fixture;
    struct stat before {};
    REQUIRE(::stat(fixture.file().c_str(), &before) == 0);

    fixture.manager.result({"edit", "Work", "--env", "A=1"});

    struct stat after {};
    REQUIRE(::stat(fixture.file().c_str(), &after) == 0);
    CHECK(after.st_ino != before.st_ino);
    CHECK(after.st_mode == before.st_mode);
}

TEST_CASE("a new home is made with its folders, and must be nobody else's") {
    const Manager manager;
    manager.installApp("App", "org.mozilla.firefox");
    manager.create({"app", "Work", "App"});
    manager.create({"command", "Other", aProgram});

    const auto done = manager.run({"edit", "Work", "--set", "instanceHome=~/new"});

    CHECK(done.status == 0);
    CHECK(says(done.error, "Its data stays in ~/KorvaneInstances/Work"));
    CHECK(modeOf(manager.home / "new") == 0700);
    CHECK(namesIn(manager.home / "new") == Strings{".config", "FirefoxProfile"});
    CHECK(says(manager.refusal({"edit", "Work", "--set", "instanceHome=~/KorvaneInstances/Other/"}),
               "belongs to the instance \"Other\""));
}

TEST_CASE("a variable that leads away from the home is warned of when it comes") {
    const Manager manager;
    manager.installApp("Mail", "org.example.mail");
    const auto warning = [](const std::string& name) {
        return "Its variable " + name + " decides where its program keeps its data";
    };
    const auto create = [&](const Strings& more) {
        Strings words{"create",           "app", "Work", "Mail", "--replace", "--runner",
                      KORVANE_TEST_RUNNER};
        words.insert(words.end(), more.begin(), more.end());
        return manager.run(words).error;
    };

    const auto moved = create({"--env", "HOME=/elsewhere"});
    CHECK(says(moved, warning("HOME")));
    CHECK_FALSE(contains(moved, "Its data lives in"));
    manager.result({"delete", "Work"});
    const auto inside = create({"--env", "XDG_DATA_HOME={{instanceHome}}/data"});
    CHECK_FALSE(contains(inside, "Its variable"));
    CHECK(says(inside, "Its data lives in"));
    for (const std::string name : {"HOME", "CFFIXED_USER_HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME",
                                   "XDG_CACHE_HOME", "XDG_STATE_HOME"}) {
        CAPTURE(name);
        CHECK(says(manager.run({"edit", "Work", "--env", name + "=/elsewhere"}).error,
                   warning(name)));
    }
    CHECK_FALSE(contains(manager.run({"edit", "Work", "--env", "A=1"}).error, "Its variable"));
}

TEST_CASE("a new name says which home and which identifier stay") {
    const Fixture fixture;

    const auto done = fixture.manager.run({"edit", "Work", "--name", "Office"});

    CHECK(says(done.error, "Its home stays ~/KorvaneInstances/Work, its identifier "
                           "app.korvane.instance.work."));
    CHECK_FALSE(contains(fixture.manager.run({"edit", "Office", "--env", "B=1"}).error, "stays"));
}

} // namespace korvane::test
