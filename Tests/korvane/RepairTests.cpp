#include "Registrations.h"

#include <fstream>
#include <functional>
#include <sys/stat.h>
#include <unistd.h>

namespace korvane::test {

namespace {

struct Damages : Registrations {
    /// What repair says, which has to succeed.
    ProgramResult repair(Strings more = {}) const {
        const auto done = tryToRepair(std::move(more));
        INFO(done.error);
        CHECK(done.status == 0);
        return done;
    }
    ProgramResult tryToRepair(Strings more = {}) const {
        more.insert(more.begin(), {"repair", "--runner", KORVANE_TEST_RUNNER});
        return manager.run(more);
    }
    nlohmann::json differences(Strings more = {}) const {
        more.insert(more.end(), {"--dry-run", "--json"});
        const auto before = snapshot(manager.tmp.path());
        auto found = nlohmann::json::parse(repair(std::move(more)).output)["differences"];
        CHECK(snapshot(manager.tmp.path()) == before);
        return found;
    }
    Strings kinds(const Strings& more = {}) const {
        Strings found;
        for (const auto& difference : differences(more)) found.push_back(difference["kind"]);
        return found;
    }
    void checkClean() const {
        const auto before = snapshot(manager.tmp.path());
        const auto done = repair();
        CHECK(done.output.empty());
        CHECK(done.error == "Nothing to repair.\n");
        CHECK(snapshot(manager.tmp.path()) == before);
    }
    Path homeFile() const {
        return writeFile(manager.instanceHome("Work") + "/letter", "the user's");
    }
};

void move(const Path& from, const Path& to) { REQUIRE(::rename(from.c_str(), to.c_str()) == 0); }

void remove(const Path& file) { REQUIRE(::unlink(file.c_str()) == 0); }

Path infoPlistIn(const Path& bundle) { return bundle + "/Contents/Info.plist"; }

Path jsonIn(const Path& bundle) { return bundle + "/Contents/Resources/instance.json"; }

} // namespace

TEST_CASE("where nothing is wrong nothing is touched") {
    const Damages fixture;
    fixture.checkClean();
    fixture.createCommand("Work", {"--icon", fixture.picture(red)});
    fixture.createCommand("Two words");
    fixture.manager.installApp("Mail", "org.example.mail");
    fixture.manager.create(
        {"app", "Letters", "Mail", "--plist", "LSUIElement=yes", "--plist", "Y=a b"});

    fixture.checkClean();
    CHECK(fixture.manager.json({"repair", "Work", "--runner", KORVANE_TEST_RUNNER, "--json"}) ==
          nlohmann::json::parse(R"({"differences":[],"repaired":[],"failed":[]})"));
}

TEST_CASE("a bundle that was renamed by hand keeps its name and gets its entry back") {
    const Damages fixture;
    const auto bundle = fixture.createCommand("Work", {"--icon", fixture.picture(red)});
    const auto letter = fixture.homeFile();
    const auto config = readFile(jsonIn(bundle));
    const auto renamed = fixture.manager.applications() + "/Two words.app";
    move(bundle, renamed);
    CHECK(fixture.kinds() == Strings{"entryStray"});

    const auto done = fixture.repair();

    CHECK(done.output == "The desktop entry of \"Work\" stands for " + bundle +
                             ", and the instance is at " + renamed + ".\n");
    CHECK(done.error == "Brought up to date the desktop entry of \"Work\".\n");
    checkEntry(fixture.entry(work), "Work", fixture.script(work), renamed);
    for (const auto side : iconSides) CHECK(isThere(fixture.icon(work, side)));
    CHECK(readFile(jsonIn(renamed)) == config);
    CHECK(readFile(letter) == "the user's");
    fixture.checkClean();
}

TEST_CASE("a bundle that was moved elsewhere is mended by its path, and then known") {
    const Damages fixture;
    const auto bundle = fixture.createCommand("Two words");
    const auto id = "app.korvane.instance.two-words";
    const auto moved = makeFolder(fixture.manager.tmp / "elsewhere") + "/W.app";
    move(bundle, moved);

    fixture.repair({moved});

    checkEntry(fixture.entry(id), "Two words", runnerIn(moved), moved);
    CHECK(namesIn(fixture.data("/korvane/open")).empty()); // no script is needed any more
    remove(runnerIn(moved));
    CHECK(fixture.kinds() == Strings{"runnerMissing"});
}

TEST_CASE("entries of ours whose bundle is gone are removed, and those of others are not") {
    const Damages fixture;
    const auto bundle = fixture.createCommand("Work", {"--icon", fixture.picture(red)});
    fixture.createCommand("Other");
    const auto foreign = writeFile(fixture.entry("org.example.foreign"),
                                   "[Desktop Entry]\nType=Application\nName=x\nExec=/gone\n");
    move(bundle, fixture.manager.tmp / "trash.app");

    const auto done = fixture.repair();

    CHECK(done.output == "The desktop entry " + fixture.entry(work) + " stands for " + bundle +
                             ", which is gone.\n");
    CHECK(done.error == "Removed the desktop entry " + fixture.entry(work) + ".\n");
    CHECK(namesIn(fixture.data("/applications")) ==
          Strings{"app.korvane.instance.other.desktop", "org.example.foreign.desktop"});
    for (const auto side : iconSides) CHECK_FALSE(isThere(fixture.icon(work, side)));
    CHECK(isThere(foreign));
    fixture.checkClean();
}

TEST_CASE("what is missing of an instance or out of date is made again") {
    struct Row {
        std::string kind;
        std::function<void(const Damages&, const Path&)> damage;
    };
    const auto appendTo = [](const Path& file) { writeFile(file, readFile(file) + "# more\n"); };
    const Row rows[] = {
        {"runnerMissing", [](auto&, auto& bundle) { remove(runnerIn(bundle)); }},
        {"runnerNotRunnable", [](auto&, auto& bundle) { setMode(runnerIn(bundle), 0644); }},
        {"runnerDiffers",
         [](auto&, auto& bundle) {
             writeFile(runnerIn(bundle), "#!/bin/sh\n");
             setMode(runnerIn(bundle), 0700);
         }},
        {"infoPlistMissing", [](auto&, auto& bundle) { remove(infoPlistIn(bundle)); }},
        {"infoPlistMissing", [](auto&, auto& bundle) { writeFile(infoPlistIn(bundle), "x"); }},
        {"infoPlistDiffers",
         [](auto&, auto& bundle) {
             auto text = readFile(infoPlistIn(bundle));
             text.replace(text.find("<string>Work"), 12, "<string>Job!");
             writeFile(infoPlistIn(bundle), text);
         }},
        {"entryMissing", [](auto& fixture, auto&) { remove(fixture.entry(work)); }},
        {"entryOutdated", [&](auto& fixture, auto&) { appendTo(fixture.entry(work)); }},
        {"entryOutdated", [](auto& fixture, auto&) { remove(fixture.icon(work, 48)); }},
        {"entryOutdated",
         [&](auto& fixture, auto&) { writeFile(fixture.icon(work, 48), "other"); }},
        {"entryOutdated", [](auto& fixture, auto&) { remove(fixture.script(work)); }},
        {"entryOutdated", [](auto& fixture, auto&) { setMode(fixture.script(work), 0644); }},
    };
    for (const auto& row : rows) {
        CAPTURE(row.kind);
        const Damages fixture;
        const auto bundle =
            fixture.createCommand("Work", {"--icon", fixture.picture(red), "--output",
                                           fixture.manager.tmp / "two words"});
        const auto complete = snapshot(fixture.manager.tmp.path());
        row.damage(fixture, bundle);
        CHECK(fixture.kinds({bundle}) == Strings{row.kind});

        const auto done = fixture.repair({bundle});

        CHECK(contains(done.output, "\"Work\""));
        CHECK(says(done.error, "\"Work\"."));
        CHECK(snapshot(fixture.manager.tmp.path()) == complete);
    }
}

TEST_CASE("what others have added to an Info.plist stays") {
    const Damages fixture;
    const auto bundle = fixture.createCommand("Work");
    auto text = readFile(infoPlistIn(bundle));
    text.insert(text.find("<key>"), "<key>AddedByHand</key><true/>");
    writeFile(infoPlistIn(bundle), text);
    fixture.checkClean();
    text.replace(text.find("<string>Work"), 12, "<string>Job!");
    writeFile(infoPlistIn(bundle), text);

    fixture.repair();

    CHECK(contains(readFile(infoPlistIn(bundle)), "AddedByHand"));
    fixture.checkClean();
}

TEST_CASE("a running instance goes on while its runner is replaced") {
    const Damages fixture;
    const auto& manager = fixture.manager;
    const auto fifo = manager.tmp / "fifo";
    REQUIRE(::mkfifo(fifo.c_str(), 0600) == 0);
    const auto bundle = manager.create(
        {"command", "Work", "/bin/sh", "--", "-c", "read x < " + quoted(fifo) + "; exit 7"});
    writeFile(runnerIn(bundle), readFile(runnerIn(bundle)) + "an older version");
    RunningProgram running({.command = {runnerIn(bundle)}});
    std::ofstream held(fifo); // waits until the program reads, which goes on until it is closed

    fixture.repair({"Work"});
    held.close();

    CHECK(running.wait().status == 7);
    CHECK(readFile(runnerIn(bundle)) == readFile(KORVANE_TEST_RUNNER));
}

TEST_CASE("two instances with one identifier are said and left as they are") {
    const Damages fixture;
    const auto bundle = fixture.createCommand("Work");
    const auto copy = fixture.manager.applications() + "/Copy.app";
    REQUIRE(run({"cp", "-r", bundle, copy}).status == 0);
    remove(runnerIn(copy));
    remove(fixture.entry(work));
    const auto before = snapshot(fixture.manager.tmp.path());

    const auto done = fixture.tryToRepair();

    CHECK(done.status == 1);
    CHECK(says(done.output,
               "\"Work\" at " + copy + " has the identifier of the instance at " + bundle));
    CHECK(says(done.output, "\"Work\" at " + bundle + " has the identifier"));
    CHECK(says(done.error, "2 things could not be repaired."));
    CHECK(snapshot(fixture.manager.tmp.path()) == before);
}

TEST_CASE("what is another's or cannot be read is said and left as it is") {
    const Damages fixture;
    const auto bundle = fixture.createCommand("Work");
    writeFile(fixture.entry(work), "[Desktop Entry]\nType=Application\nName=x\nExec=/bin/true\n");
    const auto other = fixture.createCommand("Other");
    writeFile(jsonIn(other), "{}");
    CHECK(fixture.kinds() == Strings{"bundleUnreadable", "entryTaken"});
    const auto before = snapshot(fixture.manager.tmp.path());

    const auto done = fixture.tryToRepair();

    CHECK(done.status == 1);
    CHECK(says(done.output, "The configuration of an instance cannot be read: " + jsonIn(other)));
    CHECK(says(done.output,
               "A desktop entry of the same name is there already: " + fixture.entry(work)));
    CHECK(snapshot(fixture.manager.tmp.path()) == before);
    CHECK(isThere(bundle));
}

TEST_CASE("an identifier that was changed by hand takes the entry along") {
    const Damages fixture;
    const auto bundle = fixture.createCommand("Work");
    auto config = fixture.manager.configOf(bundle);
    config.bundleId = "org.example.other";
    writeFile(jsonIn(bundle), config.encode());
    CHECK(fixture.kinds() == Strings{"infoPlistDiffers", "entryMissing", "entryFormer"});

    fixture.repair();

    CHECK(namesIn(fixture.data("/applications")) == Strings{"org.example.other.desktop"});
    checkEntry(fixture.entry("org.example.other"), "Work", runnerIn(bundle), bundle);
    fixture.checkClean();
}

TEST_CASE("an instance that would hide a program is not put into the menu") {
    const Damages fixture;
    fixture.createCommand("Work");
    remove(fixture.entry(work));
    writeFile(fixture.manager.tmp / ("share/applications/" + work + ".desktop"),
              "[Desktop Entry]\n");

    CHECK(fixture.kinds() == Strings{"entryTaken"});
    CHECK(fixture.tryToRepair().status == 1);
    CHECK_FALSE(isThere(fixture.entry(work)));
}

TEST_CASE("a lost icon of the bundle is said, and the menu keeps what it has") {
    const Damages fixture;
    const auto bundle = fixture.createCommand("Work", {"--icon", fixture.picture(red)});
    remove(bundle + "/Contents/Resources/AppIcon.icns");

    CHECK(fixture.kinds() == Strings{"iconMissing"});
    CHECK(fixture.tryToRepair().status == 1);
    CHECK(isThere(fixture.icon(work, 48)));
}

TEST_CASE("a repair that fails for one thing goes on with the others") {
    const Damages fixture;
    const auto bundle = fixture.createCommand("Work");
    remove(fixture.entry(work));
    remove(runnerIn(bundle));
    REQUIRE(::rmdir((bundle + "/Contents/MacOS").c_str()) == 0);
    writeFile(bundle + "/Contents/MacOS", "in the way");

    const auto done = fixture.tryToRepair({"--json"});

    CHECK(done.status == 1);
    const auto told = nlohmann::json::parse(done.output);
    REQUIRE(told["failed"].size() == 1);
    CHECK(told["failed"][0]["kind"] == "runnerMissing");
    CHECK(contains(told["failed"][0]["reason"].get<std::string>(), bundle + "/Contents/MacOS"));
    CHECK(told["repaired"][0]["kind"] == "entryMissing");
    CHECK(told["repaired"][0]["name"] == "Work");
    CHECK(told["repaired"][0]["bundleURL"] == bundle);
    CHECK(says(done.error, "warning: \"Work\" has no runner: "));
    CHECK(isThere(fixture.entry(work)));
}

TEST_CASE("without a runner that can be run nothing is begun") {
    const Damages fixture;
    const auto bundle = fixture.createCommand("Work");
    remove(fixture.entry(work));
    const auto before = snapshot(fixture.manager.tmp.path());

    CHECK(says(fixture.manager.refusal({"repair", "--runner", jsonIn(bundle)}), jsonIn(bundle)));
    CHECK(says(fixture.manager.refusal({"repair", "Nobody", "--runner", KORVANE_TEST_RUNNER}),
               "No instance is called \"Nobody\""));

    CHECK(snapshot(fixture.manager.tmp.path()) == before);
}

} // namespace korvane::test
