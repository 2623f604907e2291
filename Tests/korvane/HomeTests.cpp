#include "Manager.h"

#include "Ambrel/Home/HomePreparation.h"

namespace korvane::test {

namespace {

struct Fixture {
    Manager manager;
    Path home = manager.instanceHome("Work");

    Fixture() { manager.installApp("App", "org.mozilla.firefox"); }

    void create(Strings more = {}) const {
        more.insert(more.begin(), {"app", "Work", "App"});
        manager.create(more);
    }
    std::string userDirectories() const { return readFile(home + "/.config/user-dirs.dirs"); }
};

ambrel::InstanceConfig configWith(const Strings& arguments, const ambrel::StringMap& variables) {
    auto config = smallestConfig();
    config.kind = ambrel::ShortcutKind::app;
    config.instanceHome = "/homes/work";
    config.extraArgs = arguments;
    config.environment = variables;
    return config;
}

std::vector<Path> dataFolders(const ambrel::InstanceConfig& config) {
    return ambrel::HomePreparation::dataFolders(ambrel::ResolvedInstance::of(config, nobody()));
}

} // namespace

TEST_CASE("the folders that arguments name are found by option and by a slash at the end") {
    using Folders = std::vector<Path>;
    const auto of = [](const Strings& arguments) { return dataFolders(configWith(arguments, {})); };

    CHECK(of({"--user-data-dir={{instanceHome}}/Data"}) == Folders{"Data"});
    CHECK(of({"-profile", "{{instanceHome}}/a/b", "-no-remote"}) == Folders{"a/b"});
    CHECK(of({"-data", "{{instanceHome}}/workspace"}) == Folders{"workspace"});
    CHECK(of({"--config-dir", "{{instanceHome}}/c"}) == Folders{"c"});
    CHECK(of({"--cache={{instanceHome}}/x/"}) == Folders{"x"});
    CHECK(of({"{{instanceHome}}//y/./z/"}) == Folders{"y/z"});
    CHECK(of({"{{instanceHome}}/letter.txt", "--log={{instanceHome}}/log"}).empty());
    CHECK(of({"--user-data-dir={{instanceHome}}/../out", "--x-dir=/elsewhere/"}).empty());
    CHECK(of({"--user-data-dir={{instanceHome}}", "--user-data-dir={{instanceHome}}2/x"}).empty());
}

TEST_CASE("the folders that variables name are found by the variable's name") {
    const auto folders =
        dataFolders(configWith({}, {{"TMPDIR", "{{instanceHome}}/tmp"},
                                    {"GNUPGHOME", "{{instanceHome}}/.gnupg"},
                                    {"HISTFILE", "{{instanceHome}}/history"},
                                    {"ANY", "{{instanceHome}}/any/"},
                                    {"WINEPREFIX", "{{instanceHome}}/wine"},
                                    {"LIST", "{{instanceHome}}/a:{{instanceHome}}/b"}}));

    CHECK(folders == std::vector<Path>{"any", ".gnupg", "tmp", "wine"});
}

TEST_CASE("a new home is its user's alone and tells programs where the user's folders are") {
    const Fixture fixture;
    fixture.create();

    CHECK(modeOf(fixture.home) == 0700);
    CHECK(modeOf(fixture.home + "/.config") == 0700);
    CHECK(modeOf(fixture.home + "/FirefoxProfile") == 0700);
    CHECK(fixture.userDirectories() == "XDG_DOWNLOAD_DIR=\"$HOME/Downloads\"\n"
                                       "XDG_DOCUMENTS_DIR=\"$HOME/Documents\"\n"
                                       "XDG_DESKTOP_DIR=\"$HOME/Desktop\"\n");
    CHECK(modeOf(fixture.home + "/.config/user-dirs.dirs") == 0600);
    CHECK(namesIn(fixture.home + "/.config") == Strings{"user-dirs.dirs"});
}

TEST_CASE("a folder that the user has switched off stays off in the instance") {
    const Fixture fixture;
    writeFile(fixture.manager.home / ".config/user-dirs.dirs", "XDG_DESKTOP_DIR=\"$HOME/\"\n");

    fixture.create();

    CHECK(fixture.userDirectories() == "XDG_DOWNLOAD_DIR=\"$HOME/Downloads\"\n"
                                       "XDG_DOCUMENTS_DIR=\"$HOME/Documents\"\n"
                                       "XDG_DESKTOP_DIR=\"$HOME/\"\n");
}

TEST_CASE("what is in a home stays as it is") {
    const Fixture fixture;
    makeFolder(fixture.home + "/FirefoxProfile");
    writeFile(fixture.home + "/.config/user-dirs.dirs", "mine");
    setMode(fixture.home, 0755);
    setMode(fixture.home + "/.config", 0750);
    const auto before = snapshot(fixture.home);

    fixture.create();

    CHECK(snapshot(fixture.home) == before);
}

TEST_CASE("preparation passes no link below the home and goes on without what lies behind it") {
    const Fixture fixture;
    const auto documents = makeFolder(fixture.manager.home / "Documents");
    struct Row {
        std::string link;
        std::string left;
    };
    for (const auto& row :
         {Row{".config", "user-dirs.dirs"}, Row{"FirefoxProfile", "FirefoxProfile"},
          Row{".config/user-dirs.dirs", "user-dirs.dirs"}}) {
        CAPTURE(row.link);
        const TempDir place;
        const auto home = makeFolder(place / "home");
        makeFolder(home + "/.config");
        if (row.link == ".config") REQUIRE(::rmdir((home + "/.config").c_str()) == 0);
        const bool isFile = row.link.ends_with(".dirs");
        makeLink(home + "/" + row.link, isFile ? documents + "/new" : documents);

        fixture.create({"--replace", "--home", home});

        CHECK(namesIn(documents).empty());
        CHECK(isLink(home + "/" + row.link));
    }
}

TEST_CASE("a folder that cannot be made is told in a warning") {
    const Fixture fixture;
    writeFile(fixture.home + "/FirefoxProfile", "a file");

    const auto done =
        fixture.manager.run({"create", "app", "Work", "App", "--runner", KORVANE_TEST_RUNNER});

    CHECK(done.status == 0);
    CHECK(says(done.error, "warning: "));
    CHECK(says(done.error, "FirefoxProfile"));
    CHECK(readFile(fixture.home + "/FirefoxProfile") == "a file");
}

TEST_CASE("a home that is the user's own or contains it is not prepared") {
    const Fixture fixture;
    makeLink(fixture.manager.tmp / "link", fixture.manager.home.path());
    for (const auto& home :
         {fixture.manager.home.path(), fixture.manager.tmp.path(), fixture.manager.tmp / "link"}) {
        CAPTURE(home);
        const auto done = fixture.manager.run({"create", "app", "Work", "App", "--runner",
                                               KORVANE_TEST_RUNNER, "--home", home, "--replace"});
        CHECK(done.status == 0);
        CHECK(says(done.error, "is or contains your own: nothing is prepared in it."));
        CHECK_FALSE(isThere(fixture.manager.home / ".config"));
        CHECK_FALSE(isThere(fixture.manager.home / "FirefoxProfile"));
        CHECK_FALSE(isThere(fixture.manager.tmp / ".config"));
    }
}

TEST_CASE("a home that has gone is prepared again before the start") {
    for (const std::string verb : {"open", "run"}) {
        CAPTURE(verb);
        const Fixture fixture;
        fixture.create();
        REQUIRE(run({"/bin/rm", "-r", fixture.home}).status == 0);

        // The program has nothing to show and ends at once, which "open" takes for a failure.
        CHECK(fixture.manager.run({verb, "Work"}).status == (verb == "open" ? 1 : 0));

        CHECK(modeOf(fixture.home) == 0700);
        CHECK(isRealFolder(fixture.home + "/FirefoxProfile"));
        CHECK(contains(fixture.userDirectories(), "$HOME/Documents"));
    }
}

TEST_CASE("a start puts back a folder that programs need and nothing that the user has removed") {
    const Fixture fixture;
    fixture.create();
    REQUIRE(run({"/bin/rm", "-r", fixture.home + "/.config", fixture.home + "/FirefoxProfile"})
                .status == 0);

    CHECK(fixture.manager.run({"run", "Work"}).status == 0);

    CHECK(isRealFolder(fixture.home + "/FirefoxProfile"));
    CHECK_FALSE(isThere(fixture.home + "/.config"));
}

TEST_CASE("a home whose path is too long for sockets is warned of") {
    const Fixture fixture;
    const auto start = fixture.manager.tmp.path() + "/";
    const auto warns = [&](std::size_t length) {
        const auto home = start + std::string(length - start.size(), 'x');
        const auto done = fixture.manager.run({"create", "app", "Work", "App", "--runner",
                                               KORVANE_TEST_RUNNER, "--home", home, "--replace"});
        CHECK(done.status == 0);
        return contains(done.error, "bytes in its path");
    };

    CHECK(warns(71));
    CHECK_FALSE(warns(70));
    CHECK(says(fixture.manager
                   .run({"edit", "Work", "--set", "instanceHome=" + start + std::string(80, 'y')})
                   .error,
               "bytes in its path"));
}

TEST_CASE("instances of other kinds get no user folders") {
    const Fixture fixture;
    fixture.manager.create({"command", "Job", "--env", "TMPDIR={{instanceHome}}/t", aProgram});

    CHECK(namesIn(fixture.manager.instanceHome("Job")) == Strings{"t"});
}

} // namespace korvane::test
