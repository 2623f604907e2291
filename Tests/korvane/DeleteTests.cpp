#include "Manager.h"

namespace korvane::test {

namespace {

/// A manager with one instance called Work, whose home holds a file.
struct Fixture {
    Manager manager;
    Path bundle = manager.create({"command", "Work", aProgram});
    Path data = writeFile(manager.instanceHome("Work") + "/data", "mine");

    /// Writes a home that the manager itself would not have chosen.
    void setHome(const Path& home) const {
        auto config = manager.configOf(bundle);
        config.instanceHome = home;
        writeFile(bundle + "/Contents/Resources/instance.json", config.encode());
    }
    void refuseToDeleteData(const std::string& reason) const {
        const auto before = snapshot(manager.tmp.path());
        CHECK(says(manager.refusal({"delete", "Work", "--data", "--yes"}), reason));
        CHECK(snapshot(manager.tmp.path()) == before);
    }
};

} // namespace

TEST_CASE("delete removes the bundle and says where the data stays") {
    const Fixture fixture;

    const auto done = fixture.manager.run({"delete", "Work"});

    CHECK(done.status == 0);
    CHECK(done.output.empty());
    CHECK(says(done.error, "Its data stays in " + fixture.manager.instanceHome("Work")));
    CHECK_FALSE(isThere(fixture.bundle));
    CHECK(readFile(fixture.data) == "mine");
}

TEST_CASE("delete takes several names, looks at all first, and tries each") {
    const Fixture fixture;
    const auto& manager = fixture.manager;
    const auto other = manager.create({"command", "Other", aProgram});
    const auto before = snapshot(manager.tmp.path());

    manager.refusal({"delete", "Work", "Nobody"});
    manager.refusal({"delete", "Work", "Other", "--data"}); // nobody can be asked
    CHECK(snapshot(manager.tmp.path()) == before);

    const auto done = manager.run({"delete", "Work", "Other", "Work", "--data", "--yes"});
    CHECK(done.status == 0);
    CHECK_FALSE(isThere(fixture.bundle));
    CHECK_FALSE(isThere(other));
}

TEST_CASE("on a terminal delete --data asks for each of several") {
    const Fixture fixture;
    const auto& manager = fixture.manager;
    const auto other = manager.create({"command", "Other", aProgram});

    const auto done = manager.runOnTerminal({"delete", "Work", "Other", "--data"}, "n\ny\n");

    CHECK(done.status == 1);
    CHECK(contains(done.output, "Nothing was deleted of \"Work\"."));
    CHECK(isThere(fixture.bundle));
    CHECK_FALSE(isThere(other));
}

TEST_CASE("delete --data removes the home too, and follows no link in it") {
    const Fixture fixture;
    const auto& manager = fixture.manager;
    for (const std::string name : {"Downloads", "Documents", "Desktop", "Library/Keychains"}) {
        writeFile(manager.home / (name + "/file"), name);
        makeFolder(manager.instanceHome("Work") + "/Library");
        makeLink(manager.instanceHome("Work") + "/" + name, manager.home / name);
    }

    manager.result({"delete", "Work", "--data", "--yes"});

    CHECK_FALSE(isThere(fixture.bundle));
    CHECK_FALSE(isThere(manager.instanceHome("Work")));
    for (const std::string name : {"Downloads", "Documents", "Desktop", "Library/Keychains"}) {
        CHECK(readFile(manager.home / (name + "/file")) == name);
    }
}

TEST_CASE("off a terminal delete --data wants --yes") {
    const Fixture fixture;
    const auto before = snapshot(fixture.manager.tmp.path());

    CHECK(says(fixture.manager.refusal({"delete", "Work", "--data"}), "--yes"));

    CHECK(snapshot(fixture.manager.tmp.path()) == before);
}

TEST_CASE("on a terminal delete --data asks, and takes anything but yes for no") {
    const Fixture fixture;
    const auto no = fixture.manager.runOnTerminal({"delete", "Work", "--data"}, "\n");
    CHECK(no.status == 1);
    CHECK(contains(no.output, "[y/N]"));
    CHECK(readFile(fixture.data) == "mine");
    CHECK(isThere(fixture.bundle));

    const auto noInput =
        fixture.manager.runOnTerminal({"delete", "Work", "--data", "--no-input"}, "y\n");
    CHECK(noInput.status == 1);
    CHECK(isThere(fixture.bundle));

    const auto yes = fixture.manager.runOnTerminal({"delete", "Work", "--data"}, "y\n");
    CHECK(yes.status == 0);
    CHECK_FALSE(isThere(fixture.bundle));
    CHECK_FALSE(isThere(fixture.manager.instanceHome("Work")));
}

TEST_CASE("data in the user's own home or one of its folders is not deleted") {
    for (const std::string folder :
         {"", "/", "/.", "/Downloads", "/Documents", "/Desktop", "/Library", "/Applications",
          "/Applications/../Documents/", "/missing/../Desktop"}) {
        CAPTURE(folder);
        const Fixture fixture;
        writeFile(fixture.manager.home / "Documents/letter", "dear");
        writeFile(fixture.manager.home / "Desktop/note", "do");
        fixture.setHome("~" + folder);
        fixture.refuseToDeleteData("your own folder");
    }
}

TEST_CASE("data in a folder that contains the user's home is not deleted") {
    const Fixture fixture;
    fixture.setHome(fixture.manager.tmp.path());
    fixture.refuseToDeleteData("your own folder");
}

TEST_CASE("data in a folder with the user's settings or fonts or Trash is not deleted") {
    const Fixture fixture;
    for (const std::string folder :
         {"/.config", "/.local", "/.local/share", "/.local/share/Trash", "/.local/share/fonts",
          "/.local/share/applications", "/.fonts", "/.themes", "/.icons", "/.config/fontconfig",
          "/.config/korvane", "/.local/share/korvane"}) {
        CAPTURE(folder);
        writeFile(fixture.manager.home.path() + folder + "/mine", "x");
        fixture.setHome("~" + folder);
        fixture.refuseToDeleteData("your own folder");
    }
}

TEST_CASE("data in a folder that the user's desktop has named is not deleted") {
    const Fixture fixture;
    const auto& manager = fixture.manager;
    writeFile(manager.home / "Dokumente/letter", "dear");
    writeFile(manager.tmp / "disk/pictures/one", "red");
    writeFile(manager.home / ".config/user-dirs.dirs",
              "XDG_DOCUMENTS_DIR=\"$HOME/Dokumente\"\nXDG_DOWNLOAD_DIR=\"" +
                  (manager.tmp / "disk/pictures") + "\"\n");

    for (const Path& home : {manager.home / "Dokumente", manager.home / "x/../Dokumente/",
                             manager.tmp / "disk/pictures", manager.tmp / "disk"}) {
        CAPTURE(home);
        fixture.setHome(home);
        fixture.refuseToDeleteData("your own folder");
    }
    writeFile(manager.home / "Documents/letter", "the usual name still counts");
    fixture.setHome(manager.home / "Documents");
    fixture.refuseToDeleteData("your own folder");
}

TEST_CASE("a home that the user's desktop has named as a folder is not deleted either") {
    const Fixture fixture;
    const auto home = fixture.manager.instanceHome("Work");
    writeFile(fixture.manager.home / ".config/user-dirs.dirs",
              "XDG_DOCUMENTS_DIR=\"" + home + "\"\n");
    fixture.refuseToDeleteData("your own folder");
}

TEST_CASE("a home that leads to the user's own folders through a link is not deleted") {
    const Fixture fixture;
    const auto& manager = fixture.manager;
    writeFile(manager.home / "Documents/letter", "dear");
    makeLink(manager.tmp / "link", manager.home / "Documents");
    makeLink(manager.tmp / "all", manager.home.path());
    makeFolder(manager.tmp / "disk/pictures");
    makeLink(manager.home / "Downloads", manager.tmp / "disk/pictures");

    for (const Path& home :
         {manager.tmp / "link", manager.tmp / "all", manager.tmp / "all/Documents",
          manager.tmp / "disk", manager.tmp / "disk/pictures"}) {
        CAPTURE(home);
        fixture.setHome(home);
        fixture.refuseToDeleteData("your own folder");
    }
}

TEST_CASE("a home that is, contains or lies in another instance's is not deleted") {
    const Fixture fixture;
    fixture.manager.create({"command", "Other", "--home", "~/homes/other", aProgram});
    makeFolder(fixture.manager.home / "homes/other/inner");
    makeLink(fixture.manager.tmp / "link", fixture.manager.home / "homes/other");

    for (const std::string home : {"~/homes/other", "~/homes", "~/homes/other/inner",
                                   "~/homes/other/new", "~/homes/x/../other"}) {
        CAPTURE(home);
        fixture.setHome(home);
        fixture.refuseToDeleteData("shares files with the home of the instance \"Other\"");
    }
    fixture.setHome(fixture.manager.tmp / "link");
    fixture.refuseToDeleteData("the instance \"Other\"");
}

TEST_CASE("an instance beside the deleted one counts, outside the default folder too") {
    const Manager manager;
    const auto out = manager.tmp / "out";
    const auto one = manager.create({"command", "One", "--output", out, "--home", "~/a", aProgram});
    manager.create({"command", "Two", "--output", out, "--home", "~/a/b", aProgram});

    CHECK(says(manager.refusal({"delete", one, "--data", "--yes"}), "the instance \"Two\""));
}

TEST_CASE("a home that is no absolute path is not deleted") {
    const Fixture fixture;
    makeFolder(fixture.manager.tmp / "relative");
    for (const std::string home : {"relative", "~no-such-user-here/x"}) {
        fixture.setHome(home);
        fixture.refuseToDeleteData("is not an absolute path");
    }
}

TEST_CASE("a link to a bundle deletes no data") {
    const Fixture fixture;
    makeLink(fixture.manager.tmp / "link.app", fixture.bundle);
    const auto before = snapshot(fixture.manager.tmp.path());

    CHECK(says(
        fixture.manager.refusal({"delete", fixture.manager.tmp / "link.app", "--data", "--yes"}),
        "only a link"));

    CHECK(snapshot(fixture.manager.tmp.path()) == before);
}

TEST_CASE(
    "data that cannot be deleted is told with its reason, and the instance can be deleted again") {
    const Fixture fixture;
    const auto& manager = fixture.manager;

    const auto setup = manager.setupAsOrdinaryUser({"delete", "Work", "--data", "--yes"});
    setMode(manager.home / "KorvaneInstances", 0555);

    const auto done = run(setup);

    CHECK(done.status == 1);
    CHECK(says(done.error, "Not all of its data in " + manager.instanceHome("Work")));
    CHECK(says(done.error, "Permission denied"));
    CHECK(isThere(fixture.bundle));

    setMode(manager.home / "KorvaneInstances", 0755);
    CHECK(run(setup).status == 0);
    CHECK_FALSE(isThere(fixture.bundle));
    CHECK_FALSE(isThere(manager.instanceHome("Work")));
}

TEST_CASE("a home that is a link to elsewhere is refused with nothing touched") {
    const Fixture fixture;
    const auto& manager = fixture.manager;
    writeFile(manager.tmp / "disk/data", "far");
    makeLink(manager.tmp / "link", manager.tmp / "disk");
    fixture.setHome(manager.tmp / "link");

    fixture.refuseToDeleteData("is a link to another folder");

    CHECK(readFile(manager.tmp / "disk/data") == "far");
    CHECK(isThere(fixture.bundle));
}

TEST_CASE("a bundle that cannot be removed is a failure, and the data stays") {
    const Fixture fixture;
    const auto& manager = fixture.manager;
    const auto setup = manager.setupAsOrdinaryUser({"delete", "Work", "--data", "--yes"});
    setMode(manager.applications(), 0555);

    const auto done = run(setup);

    CHECK(done.status == 1);
    CHECK(says(done.error, fixture.bundle));
    CHECK(isThere(fixture.bundle + "/Contents/Resources/instance.json"));
    CHECK(readFile(fixture.data) == "mine");
}

TEST_CASE("an instance without data wants the consent to deleting data as well") {
    const Manager manager;
    const auto bundle = manager.create({"command", "Work", aProgram});
    ::rmdir(manager.instanceHome("Work").c_str());

    CHECK(says(manager.refusal({"delete", "Work", "--data"}), "--yes"));
    CHECK(isThere(bundle));
    CHECK(manager.run({"delete", "Work", "--data", "--yes"}).status == 0);

    CHECK_FALSE(isThere(bundle));
}

} // namespace korvane::test
