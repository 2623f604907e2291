#include "Manager.h"

namespace korvane::test {

TEST_CASE("migrate moves private files into the user's folders and tells the counts") {
    const Manager manager;
    manager.create({"command", "Work", aProgram});
    writeFile(manager.home / "Downloads/a.txt", "user's");
    writeFile(manager.instanceHome("Work") + "/Downloads/a.txt", "instance's");
    makeFolder(manager.instanceHome("Work") + "/Desktop");
    makeFolder(manager.home / "Desktop");

    const auto counts = manager.json({"migrate", "Work", "--json"})["moved"];

    CHECK(counts == nlohmann::json{{"Desktop", 0}, {"Downloads", 1}});
    CHECK(readFile(manager.home / "Downloads/a.txt") == "user's");
    CHECK(readFile(manager.home / "Downloads/a (1).txt") == "instance's");
    CHECK(isLink(manager.instanceHome("Work") + "/Downloads"));
    CHECK(manager.json({"migrate", "Work", "--json"})["moved"].empty());
}

TEST_CASE("migrate says what it moved on standard error") {
    const Manager manager;
    manager.create({"command", "Work", aProgram});
    writeFile(manager.instanceHome("Work") + "/Documents/a", "");

    const auto done = manager.run({"migrate", "Work"});

    CHECK(done.output.empty());
    CHECK(done.error == "Moved 1 item to your Documents.\n");
    CHECK(manager.run({"migrate", "Work"}).error == "There was nothing to move.\n");
}

TEST_CASE("migrate moves into the folder that the user's desktop has named") {
    const Manager manager;
    manager.create({"command", "Work", aProgram});
    writeFile(manager.home / ".config/user-dirs.dirs",
              "XDG_DOCUMENTS_DIR=\"$HOME/Dokumente\"\nXDG_DESKTOP_DIR=\"$HOME/\"\n");
    makeFolder(manager.home / "Dokumente");
    writeFile(manager.instanceHome("Work") + "/Documents/a", "mine");
    writeFile(manager.instanceHome("Work") + "/Desktop/b", "stays");

    CHECK(manager.json({"migrate", "Work", "--json"})["moved"] == nlohmann::json{{"Documents", 1}});

    CHECK(readFile(manager.home / "Dokumente/a") == "mine");
    CHECK(linkText(manager.instanceHome("Work") + "/Documents") == manager.home / "Dokumente");
    CHECK(readFile(manager.instanceHome("Work") + "/Desktop/b") == "stays");
}

TEST_CASE("migrate moves nothing to the place of a disk that is not there") {
    const Manager manager;
    manager.installApp("App", "org.example.app");
    manager.create({"app", "Work", "App"});
    const auto letter = writeFile(manager.instanceHome("Work") + "/Documents/letter", "dear");
    writeFile(manager.home / ".config/user-dirs.dirs",
              "XDG_DOCUMENTS_DIR=\"" + (manager.tmp / "media/disk/Documents") + "\"\n");

    const auto done = manager.run({"migrate", "Work"});

    CHECK(done.status == 1);
    CHECK(says(done.error, "could not be moved and stays in"));
    CHECK(says(done.error, (manager.tmp / "media/disk/Documents") + " is not there."));
    CHECK(readFile(letter) == "dear");
    CHECK_FALSE(isThere(manager.tmp / "media"));
}

TEST_CASE("migrate leaves a home that is the user's own alone") {
    const Manager manager;
    manager.create({"command", "Own", "--home", "~", aProgram});
    writeFile(manager.home / "Documents/a", "mine");

    CHECK(says(manager.refusal({"migrate", "Own"}), "is your own"));

    CHECK(readFile(manager.home / "Documents/a") == "mine");
}

TEST_CASE("migrate leaves an instance alone that keeps folders of its own") {
    const Manager manager;
    manager.installApp("Mail", "org.example.mail");
    manager.create({"app", "Own", "Mail", "--no-share-folders"});
    writeFile(manager.instanceHome("Own") + "/Documents/a", "private");

    CHECK(
        says(manager.refusal({"migrate", "Own"}), "korvane edit Own --set shareUserFolders=true"));

    CHECK(readFile(manager.instanceHome("Own") + "/Documents/a") == "private");
}

TEST_CASE("what could not be moved is a failure") {
    const Manager manager;
    manager.create({"command", "Work", aProgram});
    writeFile(manager.instanceHome("Work") + "/Documents/a", "stays");
    writeFile(manager.home / "Documents", "in the way");

    const auto done = manager.run({"migrate", "Work"});

    CHECK(done.status == 1);
    CHECK(says(done.error, "stays in " + manager.instanceHome("Work")));
    CHECK(readFile(manager.instanceHome("Work") + "/Documents/a") == "stays");
}

} // namespace korvane::test
