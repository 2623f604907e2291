#include "Manager.h"

namespace korvane::test {

namespace {

/// Everything that the manager could have touched.
std::multiset<std::string> everything(const Manager& manager) {
    return snapshot(manager.tmp.path());
}

} // namespace

TEST_CASE("an existing wrapper is refused without --replace, and nothing changes") {
    const Manager manager;
    manager.create({"command", "Work", aProgram});
    const auto before = everything(manager);

    const auto error = manager.refusal({"create", "command", "Work", "/bin/false"});

    CHECK(says(error, "--replace"));
    CHECK(everything(manager) == before);
}

TEST_CASE("what is no wrapper of ours is never replaced") {
    const Manager manager;
    const auto place = manager.applications() + "/Work.app";
    SUBCASE("an application") { manager.installApp("Work", "org.example.work"); }
    SUBCASE("an empty folder") { makeFolder(place); }
    SUBCASE("a file") { writeFile(place); }
    SUBCASE("a dangling link") {
        makeFolder(manager.applications());
        makeLink(place, "/nowhere");
    }
    SUBCASE("a link to a wrapper") {
        makeFolder(manager.applications());
        makeLink(place, manager.create({"command", "Other", "--output", manager.tmp / "out",
                                        "--bundle-id", "o", aProgram}));
    }
    SUBCASE("a folder with a broken configuration") {
        writeFile(place + "/Contents/Resources/instance.json", "{");
    }
    const auto before = everything(manager);

    const auto plain = manager.refusal({"create", "command", "Work", aProgram});
    const auto replacing = manager.refusal({"create", "command", "Work", "--replace", aProgram});

    CHECK(says(plain, "is no instance"));
    CHECK(says(replacing, "is no instance"));
    CHECK(everything(manager) == before);
}

TEST_CASE("--replace puts the new wrapper in place of the old one and leaves no remains") {
    const Manager manager;
    const auto bundle = manager.create({"command", "Work", "--env", "OLD=1", aProgram});
    writeFile(bundle + "/Contents/old");
    writeFile(manager.instanceHome("Work") + "/data", "kept");

    const auto done = manager.run({"create", "command", "Work", "--replace", "--home", "~/other",
                                   "--runner", KORVANE_TEST_RUNNER, "/bin/false"});

    CHECK(done.status == 0);
    CHECK(done.output == bundle + "\n");
    CHECK(says(done.error, "The replaced instance's data stays in ~/KorvaneInstances/Work."));
    CHECK(manager.configOf(bundle).commandPath == "/bin/false");
    CHECK_FALSE(isThere(bundle + "/Contents/old"));
    CHECK(namesIn(manager.applications()) == Strings{"Work.app"});
    CHECK(readFile(manager.instanceHome("Work") + "/data") == "kept");
}

TEST_CASE("--replace keeps what is not given, and tells of it") {
    const Manager manager;
    const auto bundle = manager.create({"command", "Work", "--env", "A=1", "--env", "B=2", "--home",
                                        "~/h", "--bundle-id", "org.example.w", "--label", "W",
                                        "--working-directory", "/tmp", aProgram});

    const auto done = manager.run({"create", "command", "Work", "--replace", "--env", "B=3",
                                   "--runner", KORVANE_TEST_RUNNER, "/bin/false"});

    CHECK(done.status == 0);
    CHECK(says(done.error, "Kept of what was there: its home, its identifier, its working "
                           "directory, its label, the variable A."));
    const auto config = manager.configOf(bundle);
    CHECK(config.environment == ambrel::StringMap{{"A", "1"}, {"B", "3"}});
    CHECK(config.instanceHome == "~/h");
    CHECK(config.bundleId == "org.example.w");
    CHECK(config.workingDirectory == "/tmp");
    REQUIRE(config.iconLabel);
    CHECK(config.iconLabel->text == "W");
}

TEST_CASE("--replace makes a wrapper that was not there") {
    const Manager manager;
    CHECK(isRealFolder(manager.create({"command", "Work", "--replace", aProgram})));
}

TEST_CASE("a failed creation keeps the old wrapper and leaves no remains") {
    const Manager manager;
    manager.create({"command", "Work", aProgram});
    const auto before = everything(manager);
    const Strings base{"create", "command", "Work", "--replace"};
    const auto refusedWith = [&](const Strings& more) {
        auto words = base;
        words.insert(words.end(), more.begin(), more.end());
        words.push_back(aProgram);
        CHECK(manager.run(words).status == 1);
        CHECK(everything(manager) == before);
    };

    refusedWith({"--runner", manager.tmp / "no-runner"});
    refusedWith({"--runner", KORVANE_TEST_RUNNER, "--plist", "Key=\x01"}); // not for XML
    refusedWith({"--runner", KORVANE_TEST_RUNNER, "--home", "/dev/null/x"});
    refusedWith({"--runner", KORVANE_TEST_RUNNER, "--home", "~/new/home", "--plist", "K=\x02"});
}

} // namespace korvane::test
