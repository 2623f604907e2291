#include "AdoptFixture.h"

#include "Manager/Programs/Linux/BrowserIdentifiers.h"

namespace korvane::test {

TEST_CASE("an entry becomes a bundle whose program is a link") {
    const AdoptFixture fixture;
    fixture.writeEntry("org.example.Mail", "Exec=" + fixture.program + " %U");

    const auto bundle = fixture.adopt("org.example.Mail");

    CHECK(bundle == fixture.manager.applications() + "/Mail Reader.app");
    CHECK(linkText(bundle + "/Contents/MacOS/mailer") == fixture.program);
    CHECK(fixture.infoOf(bundle) ==
          ambrel::PropertyListDictionary{{"CFBundleIdentifier", {std::string("org.example.Mail")}},
                                         {"CFBundleExecutable", {std::string("mailer")}},
                                         {"CFBundleName", {std::string("Mail Reader")}},
                                         {"KorvaneProgram", {fixture.program}}});
    CHECK(namesIn(fixture.manager.applications()) == Strings{"Mail Reader.app"});
}

TEST_CASE("an adopted program is listed, cloned and run") {
    const AdoptFixture fixture;
    fixture.writeEntry("org.example.Mail", "Exec=" + fixture.program + " %f");
    fixture.adopt("org.example.Mail");

    CHECK(fixture.manager.json({"apps", "--json"})[0]["name"] == "Mail Reader");
    fixture.manager.create({"app", "Work", "Mail Reader", "--arg", "a b"});
    CHECK(fixture.manager.run({"run", "Work"}).status == 0);
    CHECK(fixture.manager.result({"logs", "Work"}) == "<a b>\n");
}

TEST_CASE("a mark in front of files stays between them and what an instance adds") {
    const AdoptFixture fixture;
    fixture.writeEntry("mail", "Exec=" + fixture.program + " --write -- %u\nMimeType=x/y");
    const auto bundle = fixture.adopt("mail");
    CHECK(*fixture.infoOf(bundle).at("KorvaneOpenMark").string() == "--");
    const auto made = fixture.manager.create({"app", "Work", "Mail Reader", "--arg", "-a"});

    CHECK(run({made + "/Contents/MacOS/runner"}).status == 0);
    CHECK(run({made + "/Contents/MacOS/runner", "--open", "/b c", "mailto:x"}).status == 0);

    CHECK(fixture.manager.result({"logs", "Work"}) ==
          "<--write><-a>\n<--write><-a><--></b c><mailto:x>\n");
}

TEST_CASE("an entry's own arguments go into a launcher") {
    const AdoptFixture fixture;
    fixture.writeEntry("mail", "Exec=" + fixture.program + R"( --write "it's $x" %U 100%%)");

    const auto bundle = fixture.adopt("mail");

    const auto launcher = bundle + "/Contents/MacOS/mailer";
    CHECK_FALSE(isLink(launcher));
    CHECK(modeOf(launcher) == 0755);
    CHECK(run({launcher, "file 1"}).output == "<--write><it's $x><file 1><100%>\n");
}

TEST_CASE("well-known browsers get the identifier by which their engine is told") {
    struct Row {
        std::string name;
        std::string engine;
    };
    const AdoptFixture fixture;
    const Row rows[] = {
        {"google-chrome", "chromium"},
        {"google-chrome-beta", "chromium"},
        {"brave-browser", "chromium"},
        {"microsoft-edge", "chromium"},
        {"microsoft-edge-dev", "chromium"},
        {"vivaldi-stable", "chromium"},
        {"opera", "chromium"},
        {"chromium", "chromium"},
        {"chromium-browser", "chromium"},
        {"yandex-browser", "chromium"},
        {"firefox", "firefox"},
        {"firefox-esr", "firefox"},
        {"thunderbird", "firefox"},
        {"torbrowser", "firefox"},
        {"librewolf", "firefox"},
        {"waterfox", "firefox"},
    };
    for (const auto& row : rows) {
        CAPTURE(row.name);
        fixture.writeEntry(row.name, "Exec=" + fixture.program);
        const auto into = fixture.manager.tmp / ("into-" + row.name);
        fixture.manager.result({"adopt", row.name, "--into", into});
        CHECK(fixture.manager.json({"inspect", into + "/Mail Reader.app", "--json"})["engine"] ==
              row.engine);
    }
    CHECK(wellKnownIdentifier("firefox") != wellKnownIdentifier("firefox-esr"));
    for (const std::string other : {"firefoxy", "chromium-bsu", "operator", "", "mail"}) {
        CHECK_FALSE(wellKnownIdentifier(other));
    }
}

TEST_CASE("programs that a bundle cannot start rightly are refused, and nothing is left") {
    const AdoptFixture fixture;
    struct Row {
        std::string lines;
        std::string reason;
    };
    const Row rows[] = {
        {"Exec=/usr/bin/flatpak run org.example.Mail", "Flatpak"},
        {"Exec=" + fixture.program + "\nX-SnapInstanceName=mail", "snap"},
        {"Exec=/snap/bin/mail", "snap"},
        {"Exec=" + fixture.program + "\nHidden=true", "deleted"},
        {"Exec=no-such-program-here", "No program called"},
        {"Exec=/no/such/program", "/no/such/program is no program"},
        {"Exec=" + fixture.program + " 'x'", "outside quotes"},
        {"", "has no Exec"},
    };
    for (const auto& row : rows) {
        CAPTURE(row.lines);
        fixture.writeEntry("mail", row.lines);
        CHECK(says(fixture.manager.refusal({"adopt", "mail"}), row.reason));
    }
    writeFile(fixture.manager.tmp / "link.desktop",
              "[Desktop Entry]\nType=Link\nName=x\nURL=http://example.org/\nExec=true\n");
    CHECK(says(fixture.manager.refusal({"adopt", fixture.manager.tmp / "link.desktop"}),
               "no application"));
    CHECK(says(fixture.manager.refusal({"adopt", "nothing-of-this-name"}),
               "No application or installed program is called"));
    CHECK(says(fixture.manager.refusal({"adopt", fixture.manager.tmp / "bin"}), "is no program"));
    CHECK(namesIn(fixture.manager.home.path()) == Strings{});
}

TEST_CASE("a program that wants a terminal is opened in one") {
    const AdoptFixture fixture;
    const auto terminal =
        writeScript(fixture.manager.tmp / "bin/x-terminal-emulator", "printf '<%s>' \"$0\" \"$@\"");
    const auto path = fixture.manager.tmp / "bin";
    fixture.writeEntry("edit", "Exec=" + fixture.program + " --own %F\nTerminal=true");
    fixture.writeEntry("plain", "Exec=" + fixture.program + "\nTerminal=true");

    for (const std::string id : {"edit", "plain"}) {
        CHECK(fixture.manager.run({"adopt", id, "--into", id}, {{"PATH", path}}).status == 0);
    }
    const auto start = [&](const std::string& folder) {
        return run({fixture.manager.tmp / (folder + "/Mail Reader.app/Contents/MacOS/mailer"),
                    "a b"})
            .output;
    };
    const auto output = start("edit");
    CHECK(output.starts_with("<" + terminal + "><-e><env><HOME="));
    CHECK(contains(output, "><XDG_CACHE_HOME="));
    CHECK(output.ends_with("><" + fixture.program + "><--own><a b>"));
    CHECK(start("plain").ends_with("><" + fixture.program + "><a b>"));

    const auto none = fixture.manager.run({"adopt", "edit", "--into", "none"},
                                          {{"PATH", makeFolder(fixture.manager.tmp / "empty")}});
    CHECK(none.status == 1);
    CHECK(says(none.error, "wants a terminal, and none is in the folders of PATH"));
    CHECK_FALSE(isThere(fixture.manager.tmp / "none"));
}

TEST_CASE("a shell command of an entry gets an instance's arguments as its own") {
    const AdoptFixture fixture;
    fixture.writeEntry("named",
                       "Exec=sh -c \"exec " + fixture.program + " one \\\"\\$@\\\"\" name %F");
    fixture.writeEntry("unnamed", "Exec=sh -c \"exec " + fixture.program + " %f \\\"\\$@\\\"\"");
    const auto start = [&](const std::string& id) {
        const auto done = fixture.manager.run({"adopt", id, "--into", id});
        REQUIRE(done.status == 0);
        return run({done.output.substr(0, done.output.size() - 1) + "/Contents/MacOS/sh", "x", "y"})
            .output;
    };

    fixture.writeEntry("cluster", "Exec=bash -ec \"exec " + fixture.program + " \\\"\\$@\\\"\"");
    fixture.writeEntry("percent", "Exec=sh -c \"exec " + fixture.program + " %%F 100%%\"");

    CHECK(start("named") == "<one><x><y>\n");
    CHECK(start("unnamed") == "<x><y>\n");
    CHECK(start("percent") == "<%F><100%>\n");
    const auto cluster = fixture.manager.run({"adopt", "cluster", "--into", "cluster"});
    REQUIRE(cluster.status == 0);
    CHECK(run({fixture.manager.tmp / "cluster/Mail Reader.app/Contents/MacOS/bash", "x"}).output ==
          "<x>\n");
}

TEST_CASE("a launcher becomes the program that it starts") {
    const AdoptFixture fixture;
    const auto program = writeScript(fixture.manager.tmp / "bin/who", "echo $$");
    fixture.writeEntry("who", "Exec=" + program + " --own");

    const auto launcher = fixture.adopt("who") + "/Contents/MacOS/who";

    const auto both = run({"/bin/sh", "-c", "echo $$; exec \"$0\"", launcher}).output;
    const auto first = both.substr(0, both.find('\n') + 1);
    CHECK(both == first + first);
}

TEST_CASE("a program leaves the marks by which its engine is told") {
    struct Row {
        Strings beside;
        std::string engine;
    };
    const Row rows[] = {
        {{"resources/app.asar"}, "electron"},
        {{"app.asar"}, "electron"},
        {{"resources.pak", "chrome_100_percent.pak"}, "electron"},
        {{"resources.pak"}, "other"},
        {{"chrome_100_percent.pak"}, "other"},
        {{"eclipse.ini"}, "eclipse"},
        {{"application.ini"}, "firefox"},
        {{}, "other"},
    };
    for (const std::string place : {"opt/tool/tool", "opt/tool/bin/tool"}) {
        for (const auto& row : rows) {
            CAPTURE(place);
            const AdoptFixture fixture;
            const auto program = writeScript(fixture.manager.tmp / place, "true");
            for (const auto& file : row.beside) {
                writeFile(fixture.manager.tmp / ("opt/tool/" + file));
            }
            makeLink(fixture.manager.tmp / "bin/tool", program);
            const auto bundle = fixture.adopt("bin/tool");
            const auto found = fixture.manager.json({"inspect", bundle, "--json"});
            CHECK(found["engine"] == row.engine);
        }
    }
}

TEST_CASE("what env starts is the program") {
    const AdoptFixture fixture;
    fixture.writeEntry("mail", "Exec=env A=1 B=2 " + fixture.program + " --own %u");

    const auto info = fixture.infoOf(fixture.adopt("mail"));

    CHECK(*info.at("KorvaneProgram").string() == fixture.program);
    fixture.writeEntry("snap", "Exec=env A=1 /snap/bin/mail");
    CHECK(says(fixture.manager.refusal({"adopt", "snap"}), "snap"));
    fixture.writeEntry("shell", "Exec=sh -c \"flatpak run org.example.Mail\"");
    CHECK(says(fixture.manager.refusal({"adopt", "shell"}), "Flatpak"));
}

TEST_CASE("a program of a snap or Flatpak is refused by its own name too") {
    const AdoptFixture fixture;
    const auto& tmp = fixture.manager.tmp;
    writeScript(tmp / "real/snap", "true");
    makeLink(tmp / "bin/player", tmp / "real/snap");
    writeScript(tmp / "flatpak/exports/bin/org.example.Player", "true");

    for (const std::string program : {"bin/player", "flatpak/exports/bin/org.example.Player"}) {
        CHECK(says(fixture.manager.refusal({"adopt", program}), "Flatpak or snap"));
    }
}

TEST_CASE("a Chromium browser is not taken for an Electron program") {
    const AdoptFixture fixture;
    const auto program = writeScript(fixture.manager.tmp / "opt/brave/brave", "true");
    writeFile(fixture.manager.tmp / "opt/brave/resources.pak");
    writeFile(fixture.manager.tmp / "opt/brave/chrome_100_percent.pak");
    fixture.writeEntry("brave-browser", "Exec=" + program);

    const auto found = fixture.manager.json({"inspect", fixture.adopt("brave-browser"), "--json"});

    CHECK(found["engine"] == "chromium");
}

TEST_CASE("the categories of an entry are kept for the menu") {
    const AdoptFixture fixture;
    fixture.writeEntry("mail", "Exec=" + fixture.program + "\nCategories=Network;Email;");

    const auto info = fixture.infoOf(fixture.adopt("mail"));

    CHECK(*info.at("KorvaneCategories").string() == "Network;Email;");
}

TEST_CASE("the types of files that an entry opens are kept") {
    const AdoptFixture fixture;
    fixture.writeEntry("mail", "Exec=" + fixture.program +
                                   " %U\nMimeType=message/rfc822;x-scheme-handler/mailto;");

    const auto info = fixture.infoOf(fixture.adopt("mail"));

    CHECK(*info.at("KorvaneMimeTypes").string() == "message/rfc822;x-scheme-handler/mailto;");
}

TEST_CASE("a program that the bus can activate is adopted without a warning") {
    const AdoptFixture fixture;
    fixture.writeEntry("mail", "Exec=" + fixture.program + "\nDBusActivatable=true");

    const auto done = fixture.manager.run({"adopt", "mail"});

    CHECK(done.status == 0);
    CHECK_FALSE(contains(done.error, "warning"));
    CHECK_FALSE(contains(done.error, "bus"));
}

TEST_CASE("a name in an entry cannot leave the folder") {
    const AdoptFixture fixture;
    for (const std::string name : {"../../x", ".hidden", "a\\nb"}) {
        CAPTURE(name);
        writeFile(fixture.manager.tmp / "x.desktop", "[Desktop Entry]\nType=Application\nName=" +
                                                         name + "\nExec=" + fixture.program + "\n");
        CHECK(fixture.manager.run({"adopt", fixture.manager.tmp / "x.desktop"}).status == 1);
    }
    writeFile(fixture.manager.tmp / "x.desktop",
              "[Desktop Entry]\nType=Application\nName=A/B\nExec=" + fixture.program + "\n");
    CHECK(fixture.adopt(fixture.manager.tmp / "x.desktop") ==
          fixture.manager.applications() + "/A-B.app");
}

TEST_CASE("what else stands at the bundle's place is never touched") {
    const AdoptFixture fixture;
    fixture.writeEntry("mail", "Exec=" + fixture.program);
    fixture.manager.installApp("Mail Reader", "org.example.other");
    const auto before = snapshot(fixture.manager.tmp.path());

    CHECK(says(fixture.manager.refusal({"adopt", "mail"}),
               "where the application of \"Mail Reader\" would stand."));

    CHECK(snapshot(fixture.manager.tmp.path()) == before);
}

TEST_CASE("adopt tells programs the bundle as JSON, also of one that is there") {
    const AdoptFixture fixture;

    for (const bool existed : {false, true}) {
        const auto done = fixture.manager.run({"adopt", fixture.program, "--json"});
        CHECK(done.status == 0);
        CHECK(nlohmann::json::parse(done.output) ==
              nlohmann::json{{"name", "mailer"},
                             {"bundle", fixture.manager.applications() + "/mailer.app"},
                             {"program", fixture.program}});
        CHECK(contains(done.error, "stands at") == existed);
    }
}

TEST_CASE("what adopt made is taken away again, and nothing else") {
    const AdoptFixture fixture;
    const auto& manager = fixture.manager;
    fixture.writeEntry("mail", "Name[de]=Briefe\nExec=" + fixture.program + " --own");
    const auto other = manager.installApp("Other", "org.example.other");
    makeFolder(manager.applications());
    const auto before = snapshot(manager.tmp.path());
    const auto bundle = fixture.adopt("mail");

    CHECK(says(manager.refusal({"unadopt", other}), "was not made by adopting a program"));
    const auto done = manager.run({"unadopt", "briefe"});

    CHECK(done.status == 0);
    CHECK(done.error == "Removed the application \"Mail Reader\" at " + bundle +
                            "; its program stays installed.\n");
    CHECK(snapshot(manager.tmp.path()) == before);
    CHECK(says(manager.refusal({"unadopt", "mail"}), "No application was made of \"Mail Reader\""));
}

TEST_CASE("create makes an application of a program and says so") {
    const AdoptFixture fixture;
    const auto& manager = fixture.manager;
    fixture.writeEntry("org.example.Mail", "Exec=" + fixture.program + " %f");

    const auto first = manager.run({"create", "app", "Work", "mail reader"});
    const auto app = manager.applications() + "/Mail Reader.app";

    CHECK(first.status == 0);
    CHECK(first.output == manager.applications() + "/Work.app\n");
    CHECK(says(first.error, "Adopted " + fixture.program +
                                " as the application \"Mail Reader\", without an icon"));
    CHECK(manager.configOf(manager.applications() + "/Work.app").targetAppPath == app);
    const auto json = manager.json({"create", "app", "Two", fixture.program, "--json"});
    CHECK_FALSE(json.contains("adopted"));
    CHECK(manager.run({"create", "app", "Work", "org.example.Mail"}).status == 1);
    CHECK(isThere(app));
}

TEST_CASE("an application that was made for an instance goes when that fails") {
    const AdoptFixture fixture;
    fixture.writeEntry("org.example.Mail", "Exec=" + fixture.program + " %f");
    const auto before = snapshot(fixture.manager.tmp.path());

    CHECK(says(fixture.manager.refusal(
                   {"create", "app", "Work", "mail reader", "--runner", "/no/such/runner"}),
               "runner"));

    CHECK(snapshot(fixture.manager.tmp.path()) == before);
}

} // namespace korvane::test
