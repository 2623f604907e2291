#include "AdoptFixture.h"

#include "Ambrel/Platform/FileSystem.h"

namespace korvane::test {

TEST_CASE("an entry is found by id, with its ending, by path and in a sub-folder") {
    const AdoptFixture fixture;
    fixture.writeEntry("a", "Exec=" + fixture.program);
    const auto file = fixture.writeEntry("b", "Exec=" + fixture.program);
    fixture.writeEntry("kde/c", "Exec=" + fixture.program);
    writeFile(fixture.manager.home / ".local/share/applications/a.desktop",
              "[Desktop Entry]\nType=Application\nName=User's own\nExec=" + fixture.program + "\n");

    CHECK(fixture.adopt("a") == fixture.manager.applications() + "/User's own.app");
    CHECK(fixture.manager.run({"adopt", "b.desktop", "--into", "one"}).status == 0);
    CHECK(fixture.manager.run({"adopt", file, "--into", "two"}).status == 0);
    CHECK(fixture.manager.run({"adopt", "kde-c", "--into", "three"}).status == 0);
    fixture.writeEntry("org.example.desktop", "Exec=" + fixture.program);
    CHECK(fixture.manager.run({"adopt", "org.example.desktop", "--into", "four"}).status == 0);
}

TEST_CASE("a program without an entry is adopted by path or name") {
    const AdoptFixture fixture;

    const auto byPath = fixture.adopt("bin/mailer");
    const auto byName = fixture.manager.run({"adopt", "mailer", "--into", "other"},
                                            {{"PATH", fixture.manager.tmp / "bin"}});

    CHECK(byPath == fixture.manager.applications() + "/mailer.app");
    CHECK(linkText(byPath + "/Contents/MacOS/mailer") == fixture.program);
    CHECK(*fixture.infoOf(byPath).at("CFBundleIdentifier").string() == "mailer");
    CHECK(byName.output == fixture.manager.tmp / "other/mailer.app\n");
}

TEST_CASE("a program is adopted by the only entry that starts it plainly") {
    const AdoptFixture fixture;
    const auto& manager = fixture.manager;
    const auto identifier = [&](const std::string& into, const std::string& what = "mailer") {
        const auto done =
            manager.run({"adopt", what, "--into", into}, {{"PATH", manager.tmp / "bin"}});
        REQUIRE(done.status == 0);
        const auto info = fixture.infoOf(done.output.substr(0, done.output.size() - 1));
        return *info.at("CFBundleIdentifier").string();
    };
    fixture.writeEntry("arguments", "Exec=mailer --compose %u");
    fixture.writeEntry("terminal", "Exec=mailer\nTerminal=true");
    fixture.writeEntry("unseen", "Exec=mailer\nNoDisplay=true");
    fixture.writeEntry("other", "Exec=/bin/true");
    writeFile(manager.tmp / "share/applications/bad.desktop", "no entry");

    CHECK(identifier("one") == "mailer");
    fixture.writeEntry("org.example.Mail", "Exec=mailer -- %U");
    CHECK(identifier("two") == "org.example.Mail");
    CHECK(identifier("path", fixture.program) == "org.example.Mail");
    fixture.writeEntry("a.b.Mailer", "Exec=mailer --new-window %U");
    CHECK(identifier("tied") == "a.b.Mailer");
    fixture.writeEntry("mailer", "Exec=/usr/bin/env A=1 mailer --new-window %U");
    CHECK(identifier("named") == "mailer");
}

TEST_CASE("entries between which nothing decides are listed") {
    const AdoptFixture fixture;
    const auto one = fixture.writeEntry("one", "Exec=" + fixture.program + " %U");
    const auto two = fixture.writeEntry("two", "Exec=" + fixture.program + " %U");

    const auto byProgram = fixture.manager.refusal({"adopt", fixture.program});
    const auto byName = fixture.manager.refusal({"adopt", "Mail Reader"});

    CHECK(byProgram == "korvane: Several applications are called \"" + fixture.program +
                           "\". Name one of them by its path:\n  " + one + "\n  " + two + "\n");
    CHECK(says(byName, one + "\n  " + two));
    CHECK(fixture.adopt(two) == fixture.manager.applications() + "/Mail Reader.app");
}

TEST_CASE("a program is found by all that it is called, in any case") {
    const AdoptFixture fixture;
    const auto& manager = fixture.manager;
    fixture.writeEntry("org.example.Mail", "Name[de]=Briefe\nName[pt_BR]=Correio\nExec=mailer -b");
    const auto app = manager.applications() + "/Mail Reader.app";
    const auto found = [&](const std::string& text) {
        const auto done = manager.run({"adopt", text}, {{"PATH", manager.tmp / "bin"}});
        CAPTURE(done.error);
        CHECK(done.output == app + "\n");
    };

    for (const int round : {1, 2}) { // made in the first, found in the second
        CAPTURE(round);
        for (const std::string text :
             {"org.example.Mail", "ORG.EXAMPLE.MAIL", "Mail Reader", "MAIL reader", "Briefe",
              "correio", "Org.Example.Mail.Desktop"}) {
            CAPTURE(text);
            found(text);
        }
    }
}

TEST_CASE("what fits exactly goes before what fits in another case") {
    const AdoptFixture fixture;
    const auto entry = [&](const std::string& id, const std::string& name) {
        writeFile(fixture.manager.tmp / ("share/applications/" + id + ".desktop"),
                  "[Desktop Entry]\nType=Application\nName=" + name + "\nExec=" + fixture.program +
                      "\n");
    };
    entry("mail", "First");
    entry("second", "Mail");
    entry("third", "MAIL");
    writeFile(fixture.manager.tmp / "share/applications/hidden.desktop",
              "[Desktop Entry]\nType=Application\nName=Mail\nNoDisplay=true\nExec=" +
                  fixture.program + "\n");

    CHECK(fixture.adopt("mail") == fixture.manager.applications() + "/First.app");
    CHECK(fixture.adopt("Mail") == fixture.manager.applications() + "/Mail.app");
    CHECK(*fixture.infoOf(fixture.manager.applications() + "/Mail.app")
               .at("CFBundleIdentifier")
               .string() == "second");
    CHECK(says(fixture.manager.refusal({"adopt", "THIRDS"}), "Did you mean \"third\"?"));
}

TEST_CASE("names in other languages are kept, and find the application without its entry") {
    const AdoptFixture fixture;
    const auto entry = fixture.writeEntry(
        "mail", "Name[de]=Briefe\nName[sr@latin]=Pošta\nName[../x]=Bad\nName[en_GB]=Mail Reader\n"
                "Exec=" +
                    fixture.program);

    const auto bundle = fixture.adopt("mail");

    CHECK(*ambrel::readPropertyList(bundle + "/Contents/Resources/de.lproj/InfoPlist.strings")
               ->at("CFBundleDisplayName")
               .string() == "Briefe");
    CHECK(namesIn(bundle + "/Contents/Resources") == Strings{"de.lproj", "sr@latin.lproj"});
    ambrel::fileSystem::removeItem(entry);
    CHECK(fixture.adopt("briefe") == bundle);
    CHECK(
        fixture.manager.configOf(fixture.manager.create({"app", "Work", "Pošta"})).targetAppPath ==
        bundle);
}

TEST_CASE("an entry of an instance is no program") {
    const AdoptFixture fixture;
    fixture.writeEntry("mail", "Exec=" + fixture.program);
    fixture.manager.create({"app", "Mailer Two", "mail"});

    CHECK(says(fixture.manager.refusal({"adopt", "mailer two"}),
               "No application or installed program is called"));
}

TEST_CASE("a program that its entry says is not installed is not found, and refused by its id") {
    const AdoptFixture fixture;
    fixture.writeEntry("gone", "TryExec=no-such-program-here\nExec=" + fixture.program);
    const auto other = fixture.writeEntry("mail", "TryExec=/bin/sh\nExec=" + fixture.program);

    CHECK(says(fixture.manager.refusal({"adopt", "gone"}),
               "cannot be adopted: its program is not installed: there is no "
               "\"no-such-program-here\"."));
    fixture.adopt("Mail Reader");
    CHECK(*fixture.infoOf(fixture.manager.applications() + "/Mail Reader.app")
               .at("CFBundleIdentifier")
               .string() == "mail");
}

TEST_CASE("what the session bus starts is an instance by names of its own, and by nothing else") {
    const AdoptFixture fixture;
    const auto& manager = fixture.manager;
    const auto tool = writeScript(fixture.manager.tmp / "bin/gapplication", "true");
    for (const std::string& lines : {"Exec=" + tool + " launch org.example.Mail %U",
                                     "Exec=env A=1 " + tool + " launch org.example.Mail",
                                     std::string("DBusActivatable=true")}) {
        CAPTURE(lines);
        fixture.writeEntry("org.example.Mail", lines);
        const auto adopted = manager.run({"adopt", "org.example.Mail"},
                                         {{"PATH", manager.tmp / "bin:/usr/bin:/bin"}});
        REQUIRE(adopted.status == 0);
        const auto bundle = manager.applications() + "/Mail Reader.app";
        const auto info = fixture.infoOf(bundle);
        CHECK(info.at("KorvaneProgram").string()->ends_with("/gapplication"));
        const auto launcher = bundle + "/Contents/MacOS/" + *info.at("CFBundleExecutable").string();
        CHECK(contains(readFile(launcher), "org.example.Mail"));
        const auto refused = [&](Strings more) {
            more.insert(more.begin(), {"create", "app", "Shared", "org.example.Mail", "--runner",
                                       KORVANE_TEST_RUNNER});
            return says(manager.refusal(more),
                        "\"Mail Reader\" is started by the session bus: without names of its own "
                        "there it would open with your own home instead of the instance's.");
        };
        CHECK(refused({"--shared-bus"}));
        CHECK(refused({"--env", "DBUS_SESSION_BUS_ADDRESS=x"}));
        manager.create({"app", "Own", "org.example.Mail"});
        CHECK(says(manager.refusal({"edit", "Own", "--set", "sharedBus=true"}),
                   "is started by the session bus"));
        CHECK(says(manager.refusal({"edit", "Own", "--env", "DBUS_SESSION_BUS_ADDRESS=x"}),
                   "is started by the session bus"));
        manager.result({"delete", "Own"});
        manager.result({"unadopt", "Mail Reader"});
    }
}

TEST_CASE("what only the session bus starts is refused where nothing can ask it to") {
    const AdoptFixture fixture;
    const auto empty = makeFolder(fixture.manager.tmp / "empty");
    fixture.writeEntry("org.example.Mail", "DBusActivatable=true");

    const auto done = fixture.manager.run({"adopt", "org.example.Mail"}, {{"PATH", empty}});

    CHECK(done.status == 1);
    CHECK(says(done.error, "\"gapplication\""));
    CHECK_FALSE(isThere(fixture.manager.applications() + "/Mail Reader.app"));
}

} // namespace korvane::test
