#include "Registrations.h"

#include "Ambrel/Instance/DesktopId.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace korvane::test {

TEST_CASE("a replacement under another identifier takes the old entry away") {
    const Registrations fixture;
    fixture.createCommand("Work 1",
                          {"--bundle-id", "org.example.one", "--icon", fixture.picture(red)});
    REQUIRE(isThere(fixture.script("org.example.one")));
    const auto other = fixture.createCommand("Other");

    fixture.createCommand(
        "Work 1", {"--bundle-id", "org.example.two", "--icon", fixture.picture(blue), "--replace"});

    CHECK(namesIn(fixture.data("/applications")) ==
          Strings{"app.korvane.instance.other.desktop", "org.example.two.desktop"});
    CHECK(namesIn(fixture.data("/korvane/open")) == Strings{"org.example.two"});
    for (const auto side : iconSides) {
        CHECK_FALSE(isThere(fixture.icon("org.example.one", side)));
        CHECK(isThere(fixture.icon("org.example.two", side)));
    }
    CHECK(isThere(other));
}

TEST_CASE("a replacement keeps a chosen icon, and one without an icon leaves none behind") {
    const Registrations fixture;
    const auto bundle = fixture.createCommand("Work", {"--icon", fixture.picture(red)});
    const auto before = fixture.registered();

    fixture.createCommand("Work", {"--replace"});
    CHECK(fixture.registered() == before);

    REQUIRE(::unlink((bundle + "/Contents/Resources/AppIcon.icns").c_str()) == 0);
    fixture.createCommand("Work", {"--replace"});

    CHECK(readEntryFile(fixture.entry(work)).string("Icon") == "utilities-terminal");
    for (const auto side : iconSides) CHECK_FALSE(isThere(fixture.icon(work, side)));
}

TEST_CASE("edit keeps an entry in step and makes none") {
    const Registrations fixture;
    const auto& manager = fixture.manager;
    fixture.createCommand("Work");

    manager.result({"edit", "Work", "--icon", fixture.picture(red)});
    CHECK(readEntryFile(fixture.entry(work)).string("Icon") == work);
    const auto first = readFile(fixture.icon(work, 48));
    manager.result({"edit", "Work", "--icon", fixture.picture(blue)});
    CHECK(readFile(fixture.icon(work, 48)) != first);

    manager.result({"unregister", "Work"});
    manager.result({"edit", "Work", "--set", "commandArgs=[]"});
    CHECK_FALSE(isThere(fixture.entry(work)));
}

TEST_CASE("delete removes all that belongs to the entry and nothing of another instance") {
    const Registrations fixture;
    fixture.createCommand("Other one", {"--icon", fixture.picture(blue)});
    const auto before = fixture.registered();
    const auto bundle = fixture.createCommand("Work 1", {"--icon", fixture.picture(red)});
    CHECK(fixture.registered().size() == before.size() + 2 + iconSides.size());

    fixture.manager.result({"delete", "Work 1"});

    CHECK_FALSE(isThere(bundle));
    CHECK(fixture.registered() == before);
}

TEST_CASE("deleting a link to an instance leaves the entry of the instance") {
    const Registrations fixture;
    const auto bundle = fixture.createCommand("Work");
    makeLink(fixture.manager.tmp / "link.app", bundle);
    const auto before = fixture.registered();

    fixture.manager.result({"delete", fixture.manager.tmp / "link.app"});

    CHECK(isThere(bundle));
    CHECK(fixture.registered() == before);
}

TEST_CASE("deleting a copy of a bundle leaves the entry of the instance") {
    const Registrations fixture;
    const auto bundle = fixture.createCommand("Work");
    const auto copy = fixture.manager.tmp / "copy.app";
    REQUIRE(run({"cp", "-r", bundle, copy}).status == 0);
    const auto before = fixture.registered();

    CHECK_FALSE(fixture.manager.json({"show", copy, "--json"}).contains("desktopEntry"));
    CHECK(
        says(fixture.manager.refusal({"register", copy}), "belongs to the instance at " + bundle));
    fixture.manager.result({"delete", copy});

    CHECK_FALSE(isThere(copy));
    CHECK(fixture.registered() == before);
}

TEST_CASE("an instance is registered by a link as the bundle that it leads to") {
    const Registrations fixture;
    const auto bundle = fixture.createCommand("Work");
    const auto link = fixture.manager.tmp / "link.app";
    makeLink(link, bundle);
    const auto before = fixture.registered();

    CHECK(fixture.manager.json({"show", link, "--json"})["desktopEntry"] == fixture.entry(work));
    fixture.manager.result({"unregister", link});
    CHECK_FALSE(isThere(fixture.entry(work)));
    fixture.manager.result({"register", link});

    CHECK(fixture.registered() == before);
}

TEST_CASE("register and unregister do by hand what create and delete do") {
    const Registrations fixture;
    const auto& manager = fixture.manager;
    const auto bundle = fixture.createCommand("Work 1", {"--icon", fixture.picture(red)});
    const auto complete = fixture.registered();

    CHECK(manager.result({"unregister", "Work 1"}).empty());
    CHECK(namesIn(fixture.data("/applications")).empty());
    CHECK(isThere(bundle));
    CHECK(says(manager.run({"unregister", "Work 1"}).error, "has no desktop entry"));

    const auto file = manager.result({"register", "Work 1"});
    CHECK(fixture.registered() == complete);
    CHECK(file ==
          manager.json({"show", "Work 1", "--json"})["desktopEntry"].get<std::string>() + "\n");
    CHECK(manager.result({"register", "Work 1"}) == file);
    CHECK(fixture.registered() == complete);
}

TEST_CASE("a bundle that was moved by hand is told which entry is in the way") {
    const Registrations fixture;
    const auto& manager = fixture.manager;
    const auto bundle = fixture.createCommand("Work");
    const auto moved = manager.tmp / "Work.app";
    REQUIRE(::rename(bundle.c_str(), moved.c_str()) == 0);

    const auto refusal = manager.refusal({"register", moved});
    CHECK(says(refusal, bundle + ", which is gone"));
    CHECK(says(refusal, fixture.entry(work)));
    REQUIRE(::unlink(fixture.entry(work).c_str()) == 0);
    manager.result({"register", moved});

    checkEntry(fixture.entry(work), "Work", runnerIn(moved), moved);
}

TEST_CASE("a change of icons changes the time of the theme folder and nothing else does") {
    const Registrations fixture;
    const auto theme = makeFolder(fixture.data("/icons/hicolor"));
    constexpr timespec longAgo{1000, 0};
    const auto setOld = [&] {
        const timespec times[] = {longAgo, longAgo};
        REQUIRE(::utimensat(AT_FDCWD, theme.c_str(), times, 0) == 0);
    };
    const auto changed = [&] { return statusOf(theme).st_mtim.tv_sec != longAgo.tv_sec; };
    // The folders of the sizes are there, as on a real desktop.
    for (const auto side : iconSides) makeFolder(fixture.icon("x", side) + "/..");

    setOld();
    fixture.createCommand("Work", {"--icon", fixture.picture(red)});
    CHECK(changed());
    setOld();
    fixture.createCommand("Work", {"--icon", fixture.picture(blue), "--replace"});
    CHECK(changed());
    setOld();
    fixture.manager.result({"edit", "Work", "--set", "commandArgs=[]"});
    CHECK_FALSE(changed());
    fixture.manager.result({"delete", "Work"});
    CHECK(changed());
}

TEST_CASE("list and show tell the desktop id and the entry") {
    const Registrations fixture;
    const auto& manager = fixture.manager;
    fixture.createCommand("Work");
    fixture.createCommand("2nd", {"--bundle-id", "2nd"});
    manager.result({"unregister", "2nd"});

    const auto list = manager.json({"list", "--json"});
    REQUIRE(list.size() == 2);
    CHECK(list[0]["desktopId"] == ambrel::desktopId("2nd"));
    CHECK_FALSE(list[0].contains("desktopEntry"));
    CHECK(list[1]["desktopId"] == work);
    CHECK(list[1]["desktopEntry"] == fixture.entry(work));
    CHECK(manager.json({"show", "Work", "--json"}) == list[1]);
    CHECK(contains(manager.result({"show", "Work"}), fixture.entry(work)));
    const auto shown = manager.result({"show", "2nd"});
    CHECK(contains(shown, ambrel::desktopId("2nd")));
    CHECK_FALSE(contains(shown, "desktopEntry"));
}

TEST_CASE("register and unregister tell programs the instance as JSON") {
    const Registrations fixture;
    const auto& manager = fixture.manager;
    fixture.createCommand("Work");

    const auto hidden = manager.json({"unregister", "Work", "--json"});
    const auto shown = manager.json({"register", "Work", "--json"});

    CHECK_FALSE(hidden.contains("desktopEntry"));
    CHECK(shown["desktopEntry"] == fixture.entry(work));
    CHECK(shown == manager.json({"show", "Work", "--json"}));
    const auto edited = manager.json({"edit", "Work", "--set", "environment.A=1", "--json"});
    CHECK(edited["config"]["environment"]["A"] == "1");
    CHECK(edited == manager.json({"show", "Work", "--json"}));
}

} // namespace korvane::test
