#include "Manager.h"

#include "Ambrel/Instance/ConfigFields.h"

#include <algorithm>

namespace korvane::test {

namespace {

/// A manager with one command instance called Work.
struct Fixture {
    Manager manager;
    Path bundle = manager.create({"command", "Work", aProgram, "--env", "A=1", "--", "x"});

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

    const auto config = fixture.after({"--set", "shareUserFolders=false", "--set",
                                       R"(extraArgs=["-x", "a=b", "ç"])", "--set",
                                       R"(environment={"B": "2"})", "--set", "commandArgs=[]"});

    CHECK_FALSE(config.shareUserFolders);
    CHECK(config.extraArgs == Strings{"-x", "a=b", "ç"});
    CHECK(config.environment == ambrel::StringMap{{"B", "2"}});
    CHECK(config.commandArgs == Strings{});
}

TEST_CASE("other fields are plain text, and paths become absolute") {
    const Fixture fixture;

    const auto config = fixture.after(
        {"--set", "url=https://example.org/?a=b", "--set", "commandPath=~/tool", "--set",
         "workingDirectory=sub", "--set", "strategy=wrapper-identity", "--set", "kind=file",
         "--set", "openPath=/doc", "--set", "targetAppPath=~/Mail.app"});

    CHECK(config.url == "https://example.org/?a=b");
    CHECK(config.commandPath == "~/tool");
    CHECK(config.workingDirectory == fixture.manager.tmp / "sub");
    CHECK(config.strategy == ambrel::Strategy::wrapperIdentity);
    CHECK(config.kind == ambrel::ShortcutKind::file);
    CHECK(config.openPath == "/doc");
    CHECK(config.targetAppPath == fixture.manager.home / "Mail.app");
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

    const auto config =
        fixture.after({"--set", "url=a", "openPath=/b", "--unset", "environment.A", "commandArgs"});

    CHECK(config.url == "a");
    CHECK(config.openPath == "/b");
    CHECK(config.environment.empty());
    CHECK(config.commandArgs == Strings{});
}

TEST_CASE("unsetting gives the default of the file") {
    const Fixture fixture;
    fixture.after({"--set", "shareUserFolders=false", "--set", "strategy=unsupported", "--set",
                   "menuBarIcon=true"});

    const auto config = fixture.after(
        {"--unset", "shareUserFolders", "--unset", "strategy", "--unset", "menuBarIcon", "--unset",
         "commandPath", "--unset", "commandArgs", "--unset", "kind", "--unset", "environment"});

    CHECK(config.shareUserFolders);
    CHECK(config.strategy == ambrel::Strategy::homeOverride);
    CHECK_FALSE(config.menuBarIcon);
    CHECK_FALSE(config.commandPath);
    CHECK(config.commandArgs == Strings{});
    CHECK(config.kind == ambrel::ShortcutKind::app);
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
         {"displayName", "bundleId", "infoPlistOverrides", "infoPlistOverrides.LSUIElement",
          "registerAsBrowser", "openWithPassthrough", "customIcon", "hideWrapperIcon",
          "outputDir"}) {
        CAPTURE(key);
        const auto error = fixture.manager.refusal({"edit", "Work", "--set", key + "=x"});
        CHECK(says(error, "Create the instance again instead, "));
    }
    CHECK(readFile(fixture.file()) == before);
}

TEST_CASE("a label is set as JSON, and the icon is drawn anew by create alone") {
    const Fixture fixture;
    const std::string label = R"({"text": "A", "colorHex": "FF0000", "position": "top"})";

    const auto done = fixture.manager.run({"edit", "Work", "--set", "iconLabel=" + label});

    CHECK(done.status == 0);
    CHECK(says(done.error, "--replace"));
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
         {std::string("nope=1"), std::string("=1"), std::string("url"),
          std::string("shareUserFolders=1"), std::string("shareUserFolders=yes"),
          std::string("extraArgs=-x"), std::string("extraArgs=[1]"), std::string("extraArgs={}"),
          std::string("environment=[]"), std::string(R"(environment={"A":1})"),
          std::string("environment.=1"), std::string("strategy=Unsupported"),
          std::string("kind=none"), std::string("instanceHome="), "extraArgs=" + deep,
          std::string("extraArgs=1e999")}) {
        CAPTURE(assignment.substr(0, 60));
        fixture.manager.refusal({"edit", "Work", "--set", "url=x", "--set", assignment}, 2);
    }
    fixture.manager.refusal({"edit", "Work"}, 2);
    fixture.manager.refusal({"edit", "Work", "--set", "url=x", "--unset", "url"}, 2);
    CHECK(says(fixture.manager.refusal({"edit", "Work", "--set", "iconLable=1"}, 2),
               "Did you mean \"iconLabel\"?"));
    CHECK(says(fixture.manager.refusal({"edit", "Work", "--set", "url=\xff"}), "is not UTF-8"));
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
        const bool again = field.edit.form == ambrel::FieldEdit::Form::byCreatingAgain;
        CHECK(contains(error, "Create the instance again") == again);
        CHECK(contains(error, "outside its configuration") == again);
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
    auto setup = fixture.manager.setupAsOrdinaryUser({"edit", "Work", "--set", "url=x"});

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
        setup.command.back() = "url=" + std::string(2000, 'x');
        const auto done = run(setup);
        CHECK(done.status == 1);
        CHECK(says(done.error, "the old configuration is back"));
    }
    CHECK(readFile(fixture.file()) == before);
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

} // namespace korvane::test
