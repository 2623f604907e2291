#include "Registrations.h"

#include "Ambrel/Instance/DesktopId.h"
#include "Ambrel/Platform/Images.h"
#include "ForeignEntryReader.h"
#include "Manager/Desktop/Linux/Categories.h"
#include "Support/Icons.h"

#include <algorithm>
#include <regex>
#include <sstream>

namespace korvane::test {

namespace {

/// How an opener that knows no quotes takes an Exec.
Strings splitAtBlanks(const std::string& exec) {
    Strings words;
    std::istringstream stream(exec);
    for (std::string word; stream >> word;) words.push_back(word);
    return words;
}

} // namespace

TEST_CASE("every kind of instance gets an entry that starts its own runner") {
    const Registrations fixture;
    const auto& manager = fixture.manager;
    manager.installApp("Mail", "org.example.mail");
    struct Row {
        Strings words;
        std::string icon;
        std::string categories;
    };
    const Row rows[] = {
        {{"app", "Work", "Mail"}, "application-x-executable", "Utility;"},
        {{"web", "Work", "https://example.org/"}, "applications-internet", "Network;"},
        {{"file", "Work", manager.tmp.path()}, "text-x-generic", "Utility;"},
        {{"command", "Work", aProgram}, "utilities-terminal", "Utility;"},
    };
    for (auto row : rows) {
        CAPTURE(row.words);
        row.words.insert(row.words.begin() + 1, "--replace");
        const auto bundle = manager.create(row.words);

        const auto file = fixture.entry(work);
        checkEntry(file, "Work", runnerIn(bundle), bundle);
        const auto entry = readEntryFile(file);
        CHECK(entry.string("Type") == "Application");
        CHECK(entry.string("Icon") == row.icon);
        CHECK(entry.string("Categories") == row.categories);
        CHECK(entry.string("StartupWMClass") == work);
        CHECK(entry.string("Terminal") == "false");
        CHECK(entry.string("StartupNotify") == "false");
    }
    CHECK(namesIn(fixture.data()) == Strings{"applications"});
    // Another home's variable is not heeded.
    CHECK(namesIn(manager.tmp / "data").empty());
}

TEST_CASE("an instance with an icon gets a picture of it in every size") {
    const Registrations fixture;
    fixture.createCommand("Work", {"--icon", fixture.picture(blue)});

    CHECK(readEntryFile(fixture.entry(work)).string("Icon") == work);
    CHECK(complaintsAbout(fixture.entry(work)).empty());
    for (const auto side : iconSides) {
        CAPTURE(side);
        const auto image = ambrel::images::decodePng(readFile(fixture.icon(work, side)));
        REQUIRE(image);
        CHECK(*image == filledPicture(side, side, blue));
    }
    CHECK(namesIn(fixture.data("/icons/hicolor")).size() == iconSides.size());
}

TEST_CASE("a size that the icon file holds is taken from it and the others from its widest") {
    const Registrations fixture;
    const auto png = [](std::uint32_t side, const Pixel& color) {
        return ambrel::images::encodePng(filledPicture(side, side, color));
    };
    const auto icon = writeFile(
        fixture.manager.tmp / "icon.icns",
        IcnsBuilder().element("ic07", png(128, red)).element("ic08", png(256, green)).file());

    fixture.createCommand("Work", {"--icon", icon});

    CHECK(readFile(fixture.icon(work, 128)) == png(128, red));
    for (const std::uint32_t side : {16U, 48U, 256U, 512U}) {
        CHECK(ambrel::images::decodePng(readFile(fixture.icon(work, side))) ==
              filledPicture(side, side, green));
    }
}

TEST_CASE("an icon file that cannot be read leaves the entry with the icon of its kind") {
    const Registrations fixture;
    fixture.createCommand("Work",
                          {"--icon", writeFile(fixture.manager.tmp / "icon.icns", "icns nothing")});

    CHECK(readEntryFile(fixture.entry(work)).string("Icon") == "utilities-terminal");
    CHECK_FALSE(isThere(fixture.data("/icons")));
}

TEST_CASE("whatever name a person types comes through exactly") {
    const Registrations fixture;
    int number = 0;
    for (const std::string name : {"-rf",
                                   "--help",
                                   "$(touch x)",
                                   "`x`",
                                   "a;b",
                                   "'q'",
                                   "\"q\"",
                                   "50 %",
                                   "%f %U",
                                   "a\\sb",
                                   "a\\",
                                   "\\",
                                   "[Desktop Entry]",
                                   "#x",
                                   "a=b",
                                   "Name[de]=x",
                                   "~",
                                   "C: drive",
                                   "👩‍💻 emoji",
                                   "עברית",
                                   "x\u202ecba",
                                   "e\u0301",
                                   "\u00e9",
                                   "two  blanks",
                                   "a\u2028b",
                                   "a|b&c<d>",
                                   "true",
                                   "…",
                                   "*?[x]"}) {
        const auto id = "org.example.i" + std::to_string(++number);
        CAPTURE(name);
        const auto done = fixture.manager.run({"create", "command", "--runner", KORVANE_TEST_RUNNER,
                                               "--bundle-id", id, "--", name, aProgram});
        INFO(done.error);
        REQUIRE(done.status == 0);
        const auto bundle = done.output.substr(0, done.output.size() - 1);

        const bool hasScript = isThere(fixture.script(id));
        checkEntry(fixture.entry(id), name, hasScript ? fixture.script(id) : runnerIn(bundle),
                   bundle);
    }
}

TEST_CASE("the longest name and the longest identifier have an entry") {
    const Registrations fixture;
    const std::string name(251, 'n');
    const std::string id = "a." + std::string(198, 'b');

    const auto bundle = fixture.createCommand(name, {"--bundle-id", id});
    checkEntry(fixture.entry(id), name, runnerIn(bundle), bundle);
    const auto spaced = fixture.createCommand("a b", {"--bundle-id", id + "b"});
    const auto made = ambrel::desktopId(id + "b");
    checkEntry(fixture.entry(made), "a b", fixture.script(made), spaced);
}

TEST_CASE("a name that only another program can have written is exact or refused") {
    const Registrations fixture;
    auto config = fixture.manager.configOf(fixture.createCommand("Work"));
    const auto bundle = fixture.manager.applications() + "/Work.app";
    const auto rename = [&](const std::string& name) {
        config.displayName = name;
        writeFile(bundle + "/Contents/Resources/instance.json", config.encode());
        return fixture.manager.run({"register", bundle});
    };
    for (const std::string name : {" a ", "  a  b  ", "a\nb", "\ta\t", "a\r", "\n", "\\n"}) {
        CAPTURE(name);
        CHECK(rename(name).status == 0);
        CHECK(readEntryFile(fixture.entry(work)).string("Name") == name);
        CHECK(readWithGLib(fixture.entry(work)).name == name);
        CHECK(complaintsAbout(fixture.entry(work)).empty());
    }
    const auto before = fixture.registered();
    for (const auto& name : {std::string("a\0b", 3), std::string("a\x1b[31m"), std::string("\f"),
                             std::string("a\u0085"), std::string()}) {
        CAPTURE(name);
        const auto done = rename(name);
        CHECK(done.status == 1);
        CHECK(isOneLine(done.error.substr(0, done.error.size() - 1)));
        CHECK(fixture.registered() == before);
    }
}

TEST_CASE("an opener that knows no quotes can start every instance") {
    const Registrations fixture;
    for (const std::string folder : {"two words", "tab\there", "quote's", "double\"quote", "100%",
                                     "%f", "a=b", "back\\slash", "$HOME", "`x`", "a;b", "(x)",
                                     "a\u00a0b", "a\u3000b", "bell\x07", "new\nline", "~", "*"}) {
        CAPTURE(folder);
        const auto bundle =
            fixture.createCommand("Work", {"--output", fixture.manager.tmp / folder, "--home",
                                           fixture.manager.tmp / "instance", "--replace"});

        checkEntry(fixture.entry(work), "Work", fixture.script(work), bundle);
        const auto words = splitAtBlanks(*readEntryFile(fixture.entry(work)).string("Exec"));
        REQUIRE(words == Strings{fixture.script(work)});
        CHECK(modeOf(words.front()) == 0755);
        CHECK(run({words}).status == 0);
        const auto log = fixture.manager.tmp / "instance/korvane-instance.log";
        CHECK(readFile(log) == "hello\n");
        writeFile(log, "");
        fixture.manager.result({"delete", bundle});
        CHECK(namesIn(fixture.data("/korvane/open")).empty());
    }
}

TEST_CASE("a plain path needs no script in any language") {
    const Registrations fixture;
    for (const std::string folder : {"a-b_c.d,e:f+g@h", "Büro", "работа", "仕事"}) {
        CAPTURE(folder);
        const auto bundle =
            fixture.createCommand("Work", {"--output", fixture.manager.tmp / folder, "--home",
                                           fixture.manager.tmp / "instance", "--replace"});

        checkEntry(fixture.entry(work), "Work", runnerIn(bundle), bundle);
        CHECK_FALSE(isThere(fixture.data("/korvane/open")));
        fixture.manager.result({"delete", bundle});
    }
}

TEST_CASE("a home whose path wants quotes has entries with quotes") {
    for (const std::string name :
         {"two words", "it's", "a\"b", "a\\b", "$x", "`x`", "new\nline", "a;b"}) {
        CAPTURE(name);
        const Registrations fixture;
        const OwnUserHome home(fixture.manager.tmp, name);

        const auto bundle = fixture.createCommand("Work");

        const auto data = home / ".local/share";
        checkEntry(data + "/applications/" + work + ".desktop", "Work",
                   data + "/korvane/open/" + work, bundle);
    }
}

TEST_CASE("a home that no entry can name leaves an instance without one and a warning") {
    const Registrations fixture;
    for (const std::string name : {"a=b", "50%", "bad\xff"}) {
        const OwnUserHome home(fixture.manager.tmp, name);

        const auto done = fixture.tryToCreate("Work");

        CHECK(done.status == 0);
        CHECK(says(done.error, "warning: The desktop does not show it yet. "));
        CHECK(says(done.error, "Try again with: korvane register Work"));
        CHECK(isThere(home / "Applications/Work.app/Contents/Resources/instance.json"));
        CHECK_FALSE(isThere(home / ".local/share/applications"));
    }
}

TEST_CASE("the window name is what a profile says or the process name or the id") {
    const Registrations fixture;
    const auto classWith = [&](const Strings& plist) {
        Strings more{"--replace"};
        for (const auto& assignment : plist) more.insert(more.end(), {"--plist", assignment});
        fixture.createCommand("Work", more);
        CHECK(complaintsAbout(fixture.entry(work)).empty());
        return *readEntryFile(fixture.entry(work)).string("StartupWMClass");
    };

    CHECK(classWith({}) == work);
    CHECK(classWith({"KorvaneProcessName=proc", "KorvaneWindowClass="}) == "proc");
    CHECK(classWith({"KorvaneProcessName=proc", "KorvaneWindowClass=Some Window"}) ==
          "Some Window");
}

TEST_CASE(
    "an instance's entry is never one that the session bus starts, whatever its program's is") {
    const Registrations fixture;
    const auto& manager = fixture.manager;
    writeFile(manager.tmp / "share/applications/org.example.Bus.desktop",
              "[Desktop Entry]\nType=Application\nName=Bus\nDBusActivatable=true\nExec=" +
                  aProgram + "\n");

    for (const Strings& how : {Strings{}, Strings{"--shared-bus"}}) {
        Strings words{"app", "Work", "org.example.Bus", "--replace"};
        words.insert(words.end(), how.begin(), how.end());
        manager.create(words);
        CHECK_FALSE(contains(readFile(fixture.entry(work)), "DBusActivatable"));
        CHECK(contains(readFile(fixture.entry(work)), "\nExec="));
    }
}

TEST_CASE("an entry takes over the main categories of its program") {
    const Registrations fixture;
    const auto categoriesFor = [&](const std::string& xml) {
        AppBundleBuilder(fixture.manager.applications() + "/Mail.app")
            .identifier("org.example.mail")
            .entry("KorvaneCategories", xml)
            .write();
        fixture.manager.create({"app", "Work", "Mail", "--replace"});
        CHECK_FALSE(contains(complaintsAbout(fixture.entry(work)), "error"));
        return *readEntryFile(fixture.entry(work)).string("Categories");
    };

    CHECK(categoriesFor("<string>Office;Email;</string>") == "Office;");
    CHECK(categoriesFor("<string>Office;Foo;X-Bar;Office;a b;\n;Exec=x</string>") == "Office;");
    CHECK(categoriesFor("<string>Audio;Player</string>") == "AudioVideo;Audio;");
    CHECK(categoriesFor("<string>Email;TrayIcon</string>") == "Utility;");
    CHECK(categoriesFor("<true/>") == "Utility;");
}

TEST_CASE("every category that is let through is one that the checker of entries knows") {
    const TempDir tmp;
    const auto source = readFile(std::string(KORVANE_TEST_SOURCES) +
                                 "/Sources/Manager/Desktop/Linux/Categories.cpp");
    std::string all;
    const std::regex pattern("\"([A-Za-z0-9]+)\"");
    for (auto found = std::sregex_iterator(source.begin(), source.end(), pattern);
         found != std::sregex_iterator(); ++found) {
        all += (*found)[1].str() + ";";
    }

    const auto usable = registration::mainCategoriesIn(all);

    CHECK(std::count(usable.begin(), usable.end(), ';') == 13);
    const auto complaints = complaintsAbout(
        writeFile(tmp / "all.desktop", "[Desktop Entry]\nType=Application\nName=All\n"
                                       "Exec=/bin/true\nCategories=" +
                                           usable + "\n"));
    CHECK_FALSE(contains(complaints, "error"));
    CHECK_FALSE(contains(complaints, "warning"));
}

} // namespace korvane::test
