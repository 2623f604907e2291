#include "Manager.h"

#include "Ambrel/Icon/ImageReader.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/Images.h"
#include "Ambrel/Platform/PropertyList.h"
#include "Manager/Programs/Linux/BrowserIdentifiers.h"
#include "Support/Pictures.h"

namespace korvane::test {

namespace {

std::string png(std::uint32_t width, const Pixel& color) {
    return ambrel::images::encodePng(filledPicture(width, width, color));
}

/// The colour of the icon that was made for a bundle.
Pixel colorOfIcon(const Path& bundle) {
    const auto images = ambrel::imagesIn(readFile(bundle + "/Contents/Resources/AppIcon.icns"));
    REQUIRE(images.size() == 7);
    return pixelAt(images.front(), 500, 500);
}

struct Fixture {
    Manager manager;
    Path program = writeScript(manager.tmp / "bin/mailer",
                               "for a in \"$@\"; do printf '<%s>' \"$a\"; done; echo");

    Path writeEntry(const std::string& id, const std::string& lines) const {
        return writeFile(manager.tmp / ("share/applications/" + id + ".desktop"),
                         "[Desktop Entry]\nType=Application\nName=Mail Reader\n" + lines + "\n");
    }
    Path adopt(const std::string& what) const {
        const auto output = manager.result({"adopt", what});
        return output.substr(0, output.size() - 1);
    }
    ambrel::PropertyListDictionary infoOf(const Path& bundle) const {
        const auto info = ambrel::readPropertyList(bundle + "/Contents/Info.plist");
        REQUIRE(info);
        return *info;
    }
};

} // namespace

TEST_CASE("an entry becomes a bundle whose program is a link") {
    const Fixture fixture;
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

TEST_CASE("an entry is found by id, with its ending, by path and in a sub-folder") {
    const Fixture fixture;
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
    const Fixture fixture;

    const auto byPath = fixture.adopt("bin/mailer");
    const auto byName = fixture.manager.run({"adopt", "mailer", "--into", "other"},
                                            {{"PATH", fixture.manager.tmp / "bin"}});

    CHECK(byPath == fixture.manager.applications() + "/mailer.app");
    CHECK(linkText(byPath + "/Contents/MacOS/mailer") == fixture.program);
    CHECK(*fixture.infoOf(byPath).at("CFBundleIdentifier").string() == "mailer");
    CHECK(byName.output == fixture.manager.tmp / "other/mailer.app\n");
}

TEST_CASE("a program is adopted by the only entry that starts it plainly") {
    const Fixture fixture;
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
    const Fixture fixture;
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
    const Fixture fixture;
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
    const Fixture fixture;
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
    const Fixture fixture;
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
    const Fixture fixture;
    fixture.writeEntry("mail", "Exec=" + fixture.program);
    fixture.manager.create({"app", "Mailer Two", "mail"});

    CHECK(says(fixture.manager.refusal({"adopt", "mailer two"}),
               "No application or installed program is called"));
}

TEST_CASE("a program that its entry says is not installed is not found, and refused by its id") {
    const Fixture fixture;
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

TEST_CASE("what the session bus starts is refused with the reason") {
    const Fixture fixture;
    const auto tool = writeScript(fixture.manager.tmp / "bin/gapplication", "true");
    for (const std::string& lines : {"Exec=" + tool + " launch org.example.Mail %U",
                                     "Exec=env A=1 " + tool + " launch org.example.Mail",
                                     std::string("DBusActivatable=true")}) {
        CAPTURE(lines);
        fixture.writeEntry("mail", lines);
        CHECK(says(fixture.manager.refusal({"adopt", "mail"}),
                   "it is started by the session bus, with your own home instead of an "
                   "instance's."));
    }
}

TEST_CASE("an adopted program is listed, cloned and run") {
    const Fixture fixture;
    fixture.writeEntry("org.example.Mail", "Exec=" + fixture.program + " %f");
    fixture.adopt("org.example.Mail");

    CHECK(fixture.manager.json({"apps", "--json"})[0]["name"] == "Mail Reader");
    fixture.manager.create({"app", "Work", "Mail Reader", "--arg", "a b"});
    CHECK(fixture.manager.run({"run", "Work"}).status == 0);
    CHECK(fixture.manager.result({"logs", "Work"}) == "<a b>\n");
}

TEST_CASE("a mark in front of files stays between them and what an instance adds") {
    const Fixture fixture;
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
    const Fixture fixture;
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
    const Fixture fixture;
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

TEST_CASE("the icon is made of the largest PNG of the theme and the pixmaps") {
    const Fixture fixture;
    const auto& tmp = fixture.manager.tmp;
    writeFile(tmp / "share/icons/hicolor/48x48/apps/mail.png", png(48, red));
    writeFile(tmp / "share/icons/hicolor/512x512/apps/mail.png", png(256, blue));
    writeFile(fixture.manager.home / ".local/share/icons/hicolor/64x64@2x/apps/mail.png",
              png(512, green));
    writeFile(tmp / "share/pixmaps/mail.png", png(100, black));
    writeFile(tmp / "share/icons/hicolor/1024x1024/apps/mail.png", "no picture");
    fixture.writeEntry("mail", "Exec=" + fixture.program + "\nIcon=mail");

    const auto bundle = fixture.adopt("mail");

    CHECK(colorOfIcon(bundle) == green);
    CHECK(*fixture.infoOf(bundle).at("CFBundleIconFile").string() == "AppIcon");
}

TEST_CASE(
    "the icon is a drawing where there is no large picture and an XPM where there is no other") {
    const Fixture fixture;
    const auto& tmp = fixture.manager.tmp;
    const auto svg = [](const std::string& color) {
        return "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"16\" height=\"16\">"
               "<rect width=\"16\" height=\"16\" fill=\"" +
               color + "\"/></svg>";
    };
    writeFile(tmp / "share/icons/hicolor/scalable/apps/drawn.svg", svg("#0000ff"));
    writeFile(tmp / "share/icons/hicolor/48x48/apps/drawn.png", png(48, red));
    writeFile(tmp / "share/icons/hicolor/scalable/apps/large.svg", svg("#0000ff"));
    writeFile(tmp / "share/icons/hicolor/256x256/apps/large.png", png(256, green));
    writeFile(tmp / "share/pixmaps/old.xpm", "/* XPM */\nstatic char * x[] = {\n\"2 2 1 1\",\n"
                                             "\"a c #FF0000\",\n\"aa\",\n\"aa\"};\n");
    const auto colorOf = [&](const std::string& icon) {
        fixture.writeEntry("mail", "Exec=" + fixture.program + "\nIcon=" + icon);
        // Drawings are told by the MIME types of the system (Shared MIME-info Database).
        const auto done = fixture.manager.run({"adopt", "mail", "--into", "for-" + icon},
                                              {{"XDG_DATA_DIRS", (tmp / "share") + ":/usr/share"}});
        REQUIRE(done.status == 0);
        return colorOfIcon(done.output.substr(0, done.output.size() - 1));
    };

    CHECK(colorOf("drawn") == blue);
    CHECK(colorOf("drawn.png") == blue);
    CHECK(colorOf("large") == green);
    CHECK(colorOf("old") == red);
}

TEST_CASE("an icon is found in the user's theme, in those that it inherits and in any other") {
    const Fixture fixture;
    const auto& tmp = fixture.manager.tmp;
    const auto config = fixture.manager.home / ".config/";
    const auto picture = [&](const std::string& place, std::uint32_t width, const Pixel& color) {
        writeFile(tmp / ("share/icons/" + place + ".png"), png(width, color));
    };
    const auto index = [&](const std::string& theme, const std::string& lines) {
        writeFile(tmp / ("share/icons/" + theme + "/index.theme"),
                  "[Icon Theme]\nName=x\n" + lines + "\n[16x16/any]\nSize=16\n");
    };
    index("Mine", "Inherits=Parent,hicolor\nDirectories=16x16/any");
    index("Parent", "Directories=16x16/any\nScaledDirectories=16x16@2x/places");
    index("Adwaita", "Directories=48x48/legacy");
    index("Zebra", "Directories=48/other");
    picture("Mine/16x16/any/own", 16, green);
    picture("hicolor/48x48/apps/own", 512, red);
    picture("Parent/16x16@2x/places/inherited", 32, blue);
    picture("hicolor/48x48/apps/inherited", 48, red);
    picture("Mine/unlisted/any/common", 48, red);
    picture("hicolor/48x48/mimetypes/common", 48, green);
    picture("Adwaita/48x48/legacy/fallback", 48, blue);
    picture("Zebra/48/other/fallback", 48, red);
    picture("Zebra/48/other/last", 48, green);
    picture("loose", 48, blue);
    picture("Adwaita/48x48/legacy/drawn-symbolic", 48, green);
    writeFile(fixture.manager.home / ".icons/hicolor/16x16/apps/home.png", png(16, blue));
    const auto colorOf = [&](const std::string& icon, const std::string& into) {
        fixture.writeEntry("mail", "Exec=" + fixture.program + "\nIcon=" + icon);
        const auto done = fixture.manager.run({"adopt", "mail", "--into", into + icon});
        REQUIRE(done.status == 0);
        return colorOfIcon(done.output.substr(0, done.output.size() - 1));
    };

    CHECK(colorOf("own", "plain-") == red);
    writeFile(config + "gtk-3.0/settings.ini", "[Settings]\ngtk-icon-theme-name=Mine\n");
    for (const std::string desktop : {"gtk-", "kde-"}) {
        CHECK(colorOf("own", desktop) == green);
        CHECK(colorOf("inherited", desktop) == blue);
        CHECK(colorOf("common", desktop) == green);
        CHECK(colorOf("fallback", desktop) == blue);
        CHECK(colorOf("last", desktop) == green);
        CHECK(colorOf("loose", desktop) == blue);
        CHECK(colorOf("drawn", desktop) == green);
        CHECK(colorOf("home", desktop) == blue);
        writeFile(config + "gtk-3.0/settings.ini", "[Other]\ngtk-icon-theme-name=Zebra\n");
        writeFile(config + "kdeglobals", "[General]\nTheme=Other\n[Icons]\nTheme=Mine\n");
    }
}

TEST_CASE("an icon is taken by its path, and is left out when it cannot be read") {
    const Fixture fixture;
    const auto icon = writeFile(fixture.manager.tmp / "icon.bin", png(10, red));
    fixture.writeEntry("a", "Exec=" + fixture.program + "\nIcon=" + icon);
    const auto svg = writeFile(fixture.manager.tmp / "icon.png", "<svg/>");
    fixture.writeEntry("b", "Exec=" + fixture.program + "\nIcon=" + svg);

    CHECK(colorOfIcon(fixture.adopt("a")) == red);
    const auto done = fixture.manager.run({"adopt", "b", "--into", "other"});
    CHECK(done.status == 0);
    CHECK(says(done.error, "It has no icon"));
    CHECK_FALSE(
        fixture.infoOf(fixture.manager.tmp / "other/Mail Reader.app").count("CFBundleIconFile"));
}

TEST_CASE("a program whose icon cannot be read is adopted without it") {
    const Fixture fixture;
    const auto icon = writeFile(fixture.manager.tmp / "icon.png", png(64, red).substr(0, 60));
    fixture.writeEntry("a", "Exec=" + fixture.program + "\nIcon=" + icon);

    const auto done = fixture.manager.run({"adopt", "a", "--into", "other"});

    CHECK(done.status == 0);
    CHECK(says(done.error, "It has no icon"));
    CHECK_FALSE(
        fixture.infoOf(fixture.manager.tmp / "other/Mail Reader.app").count("CFBundleIconFile"));
}

TEST_CASE("programs that a bundle cannot start rightly are refused, and nothing is left") {
    const Fixture fixture;
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
    const Fixture fixture;
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
    const Fixture fixture;
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
    const Fixture fixture;
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
            const Fixture fixture;
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
    const Fixture fixture;
    fixture.writeEntry("mail", "Exec=env A=1 B=2 " + fixture.program + " --own %u");

    const auto info = fixture.infoOf(fixture.adopt("mail"));

    CHECK(*info.at("KorvaneProgram").string() == fixture.program);
    fixture.writeEntry("snap", "Exec=env A=1 /snap/bin/mail");
    CHECK(says(fixture.manager.refusal({"adopt", "snap"}), "snap"));
    fixture.writeEntry("shell", "Exec=sh -c \"flatpak run org.example.Mail\"");
    CHECK(says(fixture.manager.refusal({"adopt", "shell"}), "Flatpak"));
}

TEST_CASE("a program of a snap or Flatpak is refused by its own name too") {
    const Fixture fixture;
    const auto& tmp = fixture.manager.tmp;
    writeScript(tmp / "real/snap", "true");
    makeLink(tmp / "bin/player", tmp / "real/snap");
    writeScript(tmp / "flatpak/exports/bin/org.example.Player", "true");

    for (const std::string program : {"bin/player", "flatpak/exports/bin/org.example.Player"}) {
        CHECK(says(fixture.manager.refusal({"adopt", program}), "Flatpak or snap"));
    }
}

TEST_CASE("a Chromium browser is not taken for an Electron program") {
    const Fixture fixture;
    const auto program = writeScript(fixture.manager.tmp / "opt/brave/brave", "true");
    writeFile(fixture.manager.tmp / "opt/brave/resources.pak");
    writeFile(fixture.manager.tmp / "opt/brave/chrome_100_percent.pak");
    fixture.writeEntry("brave-browser", "Exec=" + program);

    const auto found = fixture.manager.json({"inspect", fixture.adopt("brave-browser"), "--json"});

    CHECK(found["engine"] == "chromium");
}

TEST_CASE("the categories of an entry are kept for the menu") {
    const Fixture fixture;
    fixture.writeEntry("mail", "Exec=" + fixture.program + "\nCategories=Network;Email;");

    const auto info = fixture.infoOf(fixture.adopt("mail"));

    CHECK(*info.at("KorvaneCategories").string() == "Network;Email;");
}

TEST_CASE("the types of files that an entry opens are kept") {
    const Fixture fixture;
    fixture.writeEntry("mail", "Exec=" + fixture.program +
                                   " %U\nMimeType=message/rfc822;x-scheme-handler/mailto;");

    const auto info = fixture.infoOf(fixture.adopt("mail"));

    CHECK(*info.at("KorvaneMimeTypes").string() == "message/rfc822;x-scheme-handler/mailto;");
}

TEST_CASE("a program that the bus can activate is adopted with a warning") {
    const Fixture fixture;
    fixture.writeEntry("mail", "Exec=" + fixture.program + "\nDBusActivatable=true");

    const auto done = fixture.manager.run({"adopt", "mail"});

    CHECK(done.status == 0);
    CHECK(says(done.error, "warning: \"Mail Reader\" can be activated over the session bus"));
}

TEST_CASE("a profile that keeps a program from the bus makes the warning needless") {
    const Fixture fixture;
    fixture.writeEntry("mail", "Exec=" + fixture.program + "\nDBusActivatable=true");
    int runs = 0;
    const auto warnsWith = [&](const std::string& profile) {
        writeFile(fixture.manager.home / ".config/korvane/profiles/mail.json", profile);
        const auto done = fixture.manager.run({"adopt", "mail", "--into", std::to_string(runs++)});
        REQUIRE(done.status == 0);
        return contains(done.error, "can be activated over the session bus");
    };
    const auto profile = [](const std::string& confidence, const std::string& arguments) {
        return R"({"bundleId": "mail", "displayName": "Mail", "sandboxed": false, "strategy":
            "home-override", "singleton": "none", "prefsLeak": false, "extraArgs": [)" +
               arguments + R"(], "verifiedOn": [], "confidence": ")" + confidence + "\"}";
    };

    CHECK_FALSE(warnsWith(profile("verified", "\"--standalone\"")));
    CHECK(warnsWith(profile("broken", "\"--standalone\"")));
    CHECK(warnsWith(profile("verified", "")));
    CHECK(warnsWith("no profile"));
}

TEST_CASE("a name in an entry cannot leave the folder") {
    const Fixture fixture;
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
    const Fixture fixture;
    fixture.writeEntry("mail", "Exec=" + fixture.program);
    fixture.manager.installApp("Mail Reader", "org.example.other");
    const auto before = snapshot(fixture.manager.tmp.path());

    CHECK(says(fixture.manager.refusal({"adopt", "mail"}),
               "where the application of \"Mail Reader\" would stand."));

    CHECK(snapshot(fixture.manager.tmp.path()) == before);
}

TEST_CASE("adopt tells programs the bundle as JSON, also of one that is there") {
    const Fixture fixture;

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
    const Fixture fixture;
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
    const Fixture fixture;
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
    const Fixture fixture;
    fixture.writeEntry("org.example.Mail", "Exec=" + fixture.program + " %f");
    const auto before = snapshot(fixture.manager.tmp.path());

    CHECK(says(fixture.manager.refusal(
                   {"create", "app", "Work", "mail reader", "--runner", "/no/such/runner"}),
               "runner"));

    CHECK(snapshot(fixture.manager.tmp.path()) == before);
}

} // namespace korvane::test
