#include "Registrations.h"

#include "Ambrel/Instance/DesktopId.h"
#include "Manager/Desktop/Registration.h"

#include <functional>
#include <unistd.h>

namespace korvane::test {

namespace {

std::string entryFor(const Path& bundle, const std::string& more = "") {
    return "[Desktop Entry]\nType=Application\nName=Other\nExec=/bin/true\nX-Korvane-Bundle=" +
           bundle + "\n" + more;
}

} // namespace

TEST_CASE("what stands in the place of the entry and is not the instance's own stays") {
    const Registrations fixture;
    const auto& manager = fixture.manager;
    const auto place = fixture.entry(work);
    const auto elsewhere = fixture.createCommand("Else", {"--bundle-id", "org.example.else"});
    const auto ownText = entryFor(manager.applications() + "/Work.app");
    const auto own = writeFile(manager.tmp / "own.desktop", ownText);
    const std::pair<std::function<void()>, std::string> rows[] = {
        {[&] { writeFile(place, "[Desktop Entry]\nName=Mine\n"); }, "of the same name"},
        {[&] { writeFile(place, "no entry"); }, "of the same name"},
        {[&] { writeFile(place, "[Desktop Entry]\nX-Korvane-Bundle=Work.app\n"); }, "same name"},
        {[&] { writeFile(place, entryFor(elsewhere)); }, "belongs to the instance at " + elsewhere},
        {[&] { writeFile(place, entryFor("/gone/Work.app")); }, "/gone/Work.app, which is gone"},
        {[&] { makeLink(place, own); }, "of the same name"},
        {[&] { makeLink(place, "/nowhere"); }, "of the same name"},
        {[&] { makeFolder(place); }, "of the same name"},
    };
    for (const auto& [plant, reason] : rows) {
        plant();
        const auto before = snapshot(manager.tmp.path());

        const auto done = fixture.tryToCreate("Work", {"--bundle-id", work});
        fixture.checkRefused(done, before, reason);
        CHECK(says(done.error, "--bundle-id"));

        run({"rm", "-rf", place});
    }
}

TEST_CASE("an instance whose entry was replaced by a foreign one leaves it alone") {
    const Registrations fixture;
    const auto& manager = fixture.manager;
    const auto bundle = fixture.createCommand("Work", {"--icon", fixture.picture(red)});
    writeFile(fixture.entry(work), entryFor("/other/Work.app", "Icon=" + work + "\n"));
    const auto before = fixture.registered();

    CHECK_FALSE(manager.json({"show", "Work", "--json"}).contains("desktopEntry"));
    CHECK(says(manager.refusal({"register", "Work"}), "--bundle-id"));
    CHECK(says(manager.run({"unregister", "Work"}).error, "has no desktop entry"));
    CHECK(manager.run({"edit", "Work", "--set", "commandArgs=[]"}).status == 0);
    CHECK(manager.run({"delete", "Work"}).status == 0);

    CHECK_FALSE(isThere(bundle));
    CHECK(fixture.registered() == before);
}

TEST_CASE("an installed program is never hidden by an instance") {
    const Registrations fixture;
    const auto& manager = fixture.manager;
    for (const auto& file : Strings{manager.tmp / "share/applications/org.example.mail-x.desktop",
                                    manager.tmp / "share/applications/org.example.mail/x.desktop",
                                    fixture.data("/applications/org.example.mail/x.desktop")}) {
        CAPTURE(file);
        writeFile(file, "[Desktop Entry]\nType=Application\nName=Mail\nExec=/bin/true\n");
        const auto before = snapshot(manager.tmp.path());

        const auto done = fixture.tryToCreate("Work", {"--bundle-id", "org.example.mail-x"});

        fixture.checkRefused(done, before, file);
        CHECK(says(done.error, "--bundle-id"));
        REQUIRE(::unlink(file.c_str()) == 0);
    }
    // One that is installed later is not hidden either, and the instance's own entry stays.
    fixture.createCommand("Work");
    writeFile(manager.tmp / ("share/applications/" + work + ".desktop"), "[Desktop Entry]\n");
    CHECK(says(manager.refusal({"register", "Work"}), "share/applications/" + work));
    CHECK(isThere(fixture.entry(work)));
}

TEST_CASE("the user's own folder among the shared ones is no obstacle") {
    const Registrations fixture;
    fixture.createCommand("Work");

    const auto done = fixture.manager.run({"register", "Work"},
                                          {{"XDG_DATA_DIRS", fixture.data() + ":/nonexistent"}});

    CHECK(done.status == 0);
    CHECK(done.output == fixture.entry(work) + "\n");
}

TEST_CASE("a file in the place of an icon or the script is not lost") {
    const Registrations fixture;
    const auto& manager = fixture.manager;
    for (const auto& file : Strings{fixture.icon(work, 48), fixture.script(work)}) {
        writeFile(file, "mine");
        const auto before = snapshot(manager.tmp.path());
        fixture.checkRefused(fixture.tryToCreate("Work", {"--bundle-id", work}), before, file);
        REQUIRE(::unlink(file.c_str()) == 0);
    }
    // Beside an entry that does not use it, too.
    fixture.createCommand("Work");
    writeFile(fixture.icon(work, 48), "mine");
    const auto before = fixture.registered();

    const auto done = fixture.tryToCreate("Work", {"--replace", "--icon", fixture.picture(red)});

    CHECK(done.status == 0);
    CHECK(says(done.error, fixture.icon(work, 48)));
    CHECK(fixture.registered() == before);
    manager.result({"delete", "Work"});
    CHECK(readFile(fixture.icon(work, 48)) == "mine");
}

TEST_CASE("what an interrupted registration left is taken up again") {
    const Registrations fixture;
    const auto bundle = fixture.createCommand("Two words", {"--icon", fixture.picture(red)});
    const auto id = ambrel::desktopId(fixture.manager.configOf(bundle).bundleId);
    const auto complete = fixture.registered();
    REQUIRE(::unlink(fixture.entry(id).c_str()) == 0);
    REQUIRE(::unlink(fixture.icon(id, 16).c_str()) == 0);

    fixture.manager.result({"register", bundle});

    CHECK(fixture.registered() == complete);
}

TEST_CASE("where no entry can be written the instance is there and a warning says why") {
    const Registrations fixture;
    const auto& manager = fixture.manager;
    makeFolder(fixture.data());
    // The folder that it was built in may be closed to that user.
    copyProgram(KORVANE_TEST_RUNNER, manager.tmp / "runner");
    const auto setup = manager.setupAsOrdinaryUser(
        {"create", "command", "Work", "--runner", manager.tmp / "runner", aProgram});
    setMode(fixture.data(), 0555);

    const auto done = run(setup);

    INFO(done.error);
    CHECK(done.status == 0);
    CHECK(says(done.error, "warning: The desktop does not show it yet. Cannot "));
    CHECK(says(done.error, fixture.data("/applications")));
    CHECK(says(done.error, "Try again with: korvane register Work"));
    CHECK(done.output == manager.applications() + "/Work.app\n");
    CHECK(isThere(manager.applications() + "/Work.app/Contents/Resources/instance.json"));
}

TEST_CASE("an entry that cannot be removed is told of and the instance is gone") {
    const Registrations fixture;
    const auto bundle = fixture.createCommand("Work", {"--icon", fixture.picture(red)});
    const auto setup = fixture.manager.setupAsOrdinaryUser({"delete", "Work"});
    setMode(fixture.data("/applications"), 0555);

    const auto done = run(setup);

    CHECK(done.status == 0);
    CHECK(says(done.error, "could not be removed: " + fixture.entry(work)));
    CHECK_FALSE(isThere(bundle));
    for (const auto side : iconSides) CHECK(isThere(fixture.icon(work, side)));
}

TEST_CASE("an entry that a bundle of this path has left under another id goes with the next one") {
    const Registrations fixture;
    const auto bundle = fixture.createCommand("Work", {"--bundle-id", "org.example.old"});
    REQUIRE(run({"/bin/rm", "-r", bundle}).status == 0);
    fixture.createCommand("Other", {"--bundle-id", "org.example.other"});

    fixture.createCommand("Work", {"--bundle-id", "org.example.new"});

    CHECK_FALSE(isThere(fixture.entry("org.example.old")));
    CHECK(isThere(fixture.entry("org.example.new")));
    CHECK(isThere(fixture.entry("org.example.other")));
}

TEST_CASE("an entry that changed hands meanwhile is not removed") {
    const Registrations fixture;
    const auto bundle = fixture.createCommand("Work");
    const auto before = fixture.registered();

    registration::remove({work, fixture.entry(work), "/other/Work.app"},
                         fixture.manager.home.places());
    CHECK(fixture.registered() == before);

    registration::remove({work, fixture.entry(work), bundle}, fixture.manager.home.places());
    CHECK_FALSE(isThere(fixture.entry(work)));
}

TEST_CASE("a bundle that cannot be removed keeps its entry") {
    const Registrations fixture;
    fixture.createCommand("Work");
    const auto setup = fixture.manager.setupAsOrdinaryUser({"delete", "Work"});
    const auto before = fixture.registered();
    setMode(fixture.manager.applications(), 0555);

    CHECK(run(setup).status == 1);

    CHECK(fixture.registered() == before);
}

} // namespace korvane::test
