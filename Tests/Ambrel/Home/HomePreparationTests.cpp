#include "Ambrel/Home/HomePreparation.h"

#include "Ambrel/Home/HomesElsewhere.h"
#include "Support/Builders.h"
#include "Support/Environment.h"
#include "Support/Expect.h"

#include <algorithm>
#include <filesystem>
#include <thread>

using namespace ambrel;
using namespace korvane::test;

namespace {

/// An application's instance whose home is not there yet.
struct Scene {
    Scene() : user(tmp), home(tmp / "homes/work") { config.instanceHome = home; }

    ResolvedInstance instance() const { return ResolvedInstance::of(config, user.places()); }
    void ensure() const { HomePreparation::ensure(instance(), user.places()); }

    TempDir tmp;
    UserHome user;
    Path home;
    InstanceConfig config = smallestConfig();
};

} // namespace

TEST_CASE("a home that has gone is made for its user alone, with what programs look for in it") {
    Scene scene;
    scene.config.extraArgs = {"--user-data-dir={{instanceHome}}/Data"};
    scene.config.environment = {{"TMPDIR", "{{instanceHome}}/tmp"}};

    scene.ensure();

    CHECK(modeOf(scene.home) == 0700);
    CHECK(namesIn(scene.home) == Strings{".config", "Data", "tmp"});
    CHECK(readFile(scene.home + "/.config/user-dirs.dirs") ==
          "XDG_DOWNLOAD_DIR=\"$HOME/Downloads\"\n"
          "XDG_DOCUMENTS_DIR=\"$HOME/Documents\"\n"
          "XDG_DESKTOP_DIR=\"$HOME/Desktop\"\n");
}

TEST_CASE("in a home that is there only data folders come back") {
    Scene scene;
    scene.config.extraArgs = {"--user-data-dir={{instanceHome}}/Data"};
    makeFolder(scene.home);

    scene.ensure();

    CHECK(namesIn(scene.home) == Strings{"Data"});
}

TEST_CASE("a file gets no home, a command and a web site one without user folders") {
    struct Row {
        ShortcutKind kind;
        bool hasHome;
    };
    for (const auto& row : {Row{ShortcutKind::file, false}, Row{ShortcutKind::web, true},
                            Row{ShortcutKind::command, true}}) {
        CAPTURE(rawValue(row.kind));
        Scene scene;
        scene.config.kind = row.kind;

        scene.ensure();

        CHECK(isThere(scene.home) == row.hasHome);
        CHECK_FALSE(isThere(scene.home + "/.config"));
    }
}

TEST_CASE("a home that is or contains the user's own is not furnished") {
    Scene scene;
    for (const auto& home : {scene.user.path(), scene.tmp.path()}) {
        scene.config.instanceHome = home;
        CHECK_FALSE(HomePreparation::isPrivate(scene.instance(), scene.user.places()));
        CHECK(HomePreparation::furnish(scene.instance(), scene.user.places()).empty());
        CHECK_FALSE(isThere(home + "/.config"));
    }
}

TEST_CASE("a home that is prepared elsewhere is known from then on, without its wrapper") {
    const Scene scene;
    CHECK(homesElsewhere::all(scene.user.places()).empty());

    scene.ensure();

    CHECK(homesElsewhere::all(scene.user.places()) == Strings{scene.home});
}

TEST_CASE("the homes of instances from before the list was kept are found once") {
    const Scene scene;
    const auto bundle = writeWrapper(scene.user / "Applications/Work.app", scene.config);

    CHECK(homesElsewhere::all(scene.user.places()) == Strings{scene.home});
    writeFile(bundle + "/Contents/Resources/instance.json", "{"); // not looked at again
    CHECK(homesElsewhere::all(scene.user.places()) == Strings{scene.home});
}

TEST_CASE("homes in the usual folder need no list, but for a link that leads out of it") {
    Scene scene;
    const auto places = scene.user.places();
    REQUIRE(homesElsewhere::all(places).empty());
    const auto usual = scene.user / "KorvaneInstances/Work";

    homesElsewhere::add(usual, places);
    CHECK(homesElsewhere::all(places).empty());

    makeLink(scene.user / "KorvaneInstances/Far", makeFolder(scene.tmp / "far"));
    homesElsewhere::add(scene.user / "KorvaneInstances/Far", places);
    CHECK(homesElsewhere::all(places) ==
          Strings{scene.user / "KorvaneInstances/Far", scene.tmp / "far"});
}

TEST_CASE("nothing is listed that is no home of its own, and nothing twice") {
    const Scene scene;
    const auto places = scene.user.places();
    REQUIRE(homesElsewhere::all(places).empty());

    for (const auto& home : {scene.home, scene.home + "/", scene.user.path(), scene.tmp.path(),
                             std::string("relative"), std::string()}) {
        homesElsewhere::add(home, places);
    }

    CHECK(homesElsewhere::all(places) == Strings{scene.home});
}

TEST_CASE("a home that is forgotten is no longer on the list, and the others are") {
    const Scene scene;
    const auto places = scene.user.places();
    makeLink(scene.tmp / "link", makeFolder(scene.tmp / "far"));
    const Strings homes{scene.tmp / "homes/a", scene.tmp / "homes/ab"};
    for (const auto& home : homes) homesElsewhere::add(home, places);
    homesElsewhere::add(scene.tmp / "link", places);

    homesElsewhere::forget(scene.tmp / "link", places);
    CHECK(homesElsewhere::all(places) == homes);
    homesElsewhere::forget(homes.front() + "/", places);
    CHECK(homesElsewhere::all(places) == Strings{homes.back()});
    homesElsewhere::forget(scene.tmp / "unknown", places);
    CHECK(homesElsewhere::all(places) == Strings{homes.back()});
}

TEST_CASE("the list lies in folders that are closed to others") {
    const Scene scene;
    homesElsewhere::add(scene.home, scene.user.places());

    for (const auto* folder : {".local", ".local/share", ".local/share/korvane"}) {
        CAPTURE(folder);
        CHECK(modeOf(scene.user / folder) == 0700);
    }
    CHECK(modeOf(scene.user / ".local/share/korvane/homes") == 0600);
}

TEST_CASE("homes that are listed at the same time are all kept") {
    const Scene scene;
    const auto places = scene.user.places();
    Strings homes;
    for (int number = 10; number < 50; ++number) {
        homes.push_back(scene.tmp / ("far/" + std::to_string(number)));
    }
    std::vector<std::thread> adding;
    adding.reserve(homes.size());
    for (const auto& home : homes) {
        adding.emplace_back([&places, &home] { homesElsewhere::add(home, places); });
    }
    for (auto& thread : adding) thread.join();

    auto listed = homesElsewhere::all(places);
    std::ranges::sort(listed);
    CHECK(listed == homes);
}

TEST_CASE("a list that was cut to nothing is made again, one that is a link is not written to") {
    const Scene scene;
    const auto places = scene.user.places();
    const auto bundle = writeWrapper(scene.user / "Applications/Work.app", scene.config);
    const auto list = scene.user / ".local/share/korvane/homes";
    writeFile(list, "");

    CHECK(homesElsewhere::all(places) == Strings{scene.home});
    CHECK(readFile(list).size() > 1);

    const auto kept = writeFile(scene.tmp / "kept", "mine");
    std::filesystem::remove(list);
    makeLink(list, kept);
    homesElsewhere::add(scene.tmp / "far/Other", places);
    CHECK(readFile(kept) == "mine");
}

TEST_CASE("a link to a home is listed again when it leads elsewhere") {
    const Scene scene;
    const auto places = scene.user.places();
    const auto home = scene.tmp / "far/Work";
    makeLink(home, makeFolder(scene.tmp / "first"));
    homesElsewhere::add(home, places);
    std::filesystem::remove(home);
    makeLink(home, makeFolder(scene.tmp / "second"));

    homesElsewhere::add(home, places);

    CHECK(homesElsewhere::all(places) == Strings{home, scene.tmp / "first", scene.tmp / "second"});
}

TEST_CASE("the home of a command elsewhere is listed when it starts") {
    Scene scene;
    scene.config.kind = ShortcutKind::command;
    makeFolder(scene.home);

    scene.ensure();

    CHECK(homesElsewhere::all(scene.user.places()) == Strings{scene.home});
}

TEST_CASE("a user without a home gets none for the list") {
    const TempDir tmp;
    const auto places = UserPlaces::usual(tmp / "nobody");

    CHECK(homesElsewhere::all(places).empty());
    homesElsewhere::add(tmp / "home", places);

    CHECK(namesIn(tmp.path()).empty());
}
