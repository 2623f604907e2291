#include "Manager/Operations/Opening.h"

#include "Manager/Rules/InstanceLookup.h"
#include "RunningScene.h"

#include <sys/wait.h>
#include <unistd.h>

namespace korvane::test {

using Kind = Refusal::Kind;
using ambrel::ShortcutKind;

TEST_CASE("a run is prepared by making the home that has gone") {
    const Scene scene;
    const auto record = scene.instance();
    ambrel::fileSystem::removeTree(scene.homeOf());

    const auto runner = prepareRun(record, scene.user);

    CHECK(runner == record.bundleURL + "/Contents/MacOS/runner");
    CHECK(modeOf(scene.homeOf()) == 0700);
    CHECK_NOTHROW(requireOpenable(record, scene.user));
}

TEST_CASE("an instance without its runner is damaged") {
    const Scene scene;
    const auto record = scene.instance();
    REQUIRE(::unlink((record.bundleURL + "/Contents/MacOS/runner").c_str()) == 0);

    for (const auto& refusal : {refusalOf(scene, [&] { prepareRun(record, scene.user); }),
                                refusalOf(scene, [&] { requireOpenable(record, scene.user); }),
                                refusalOf(scene, [&] { open(record, scene.user); })}) {
        CHECK(refusal.kind == Kind::damagedInstance);
        CHECK(refusal.subject == record.bundleURL);
        CHECK(refusal.remedy == Remedy::createAgain);
    }
}

TEST_CASE("what would fail unseen is refused with what is not there") {
    const Scene scene;
    const auto made = scene.instance();
    const auto app = scene.installApp();
    const auto noProgram = AppBundleBuilder(scene.tmp / "None.app").identifier("none").write();
    struct Row {
        ShortcutKind kind;
        std::string opens;
        Kind refusal;
        std::string subject;
    };
    const Row rows[] = {
        {ShortcutKind::file, "", Kind::notLaunchable, ""},
        {ShortcutKind::file, "~/paper", Kind::notLaunchable, scene.home / "paper"},
        {ShortcutKind::command, "", Kind::notLaunchable, ""},
        {ShortcutKind::command, "~/tool", Kind::notLaunchable, scene.home / "tool"},
        {ShortcutKind::app, "/gone.app", Kind::unreadableApplication, "/gone.app"},
        {ShortcutKind::app, noProgram, Kind::notLaunchable, noProgram + "/Contents/MacOS/None"},
    };
    for (const auto& row : rows) {
        CAPTURE(row.opens);
        auto record = made;
        record.config.kind = row.kind;
        record.config.url = row.opens;
        record.config.openPath = row.opens;
        record.config.commandPath = row.opens;
        record.config.targetAppPath = row.opens;
        const auto refusal = refusalOf(scene, [&] { requireOpenable(record, scene.user); });
        CHECK(refusal.kind == row.refusal);
        CHECK(refusal.subject == row.subject);
    }
    auto site = made;
    site.config.kind = ShortcutKind::web;
    for (const auto& url : {std::optional<std::string>(), std::optional<std::string>("a b")}) {
        site.config.url = url; // its window says so
        CHECK_NOTHROW(requireOpenable(site, scene.user));
    }
    auto fixed = made;
    fixed.config.kind = ShortcutKind::app;
    fixed.config.targetAppPath = app;
    CHECK_NOTHROW(requireOpenable(fixed, scene.user));
    fixed.config.strategy = ambrel::Strategy::unsupported;
    CHECK(refusalOf(scene, [&] { requireOpenable(fixed, scene.user); }).subject ==
          "org.example.mail");
}

TEST_CASE("a command whose folder is not there is not opened") {
    const Scene scene;
    auto record = scene.instance();
    record.config.workingDirectory = "/nowhere";

    const auto refusal = refusalOf(scene, [&] { requireOpenable(record, scene.user); });

    CHECK(refusal.kind == Kind::notLaunchable);
    CHECK(refusal.subject == "/nowhere");
}

namespace {

/// A scene whose user is also the one of the programs that are started.
struct Openable : RunningScene {
    ScopedVariable variable{"CFFIXED_USER_HOME", home.path()};

    /// Looks until the start has ended.
    Opened opened(const ambrel::InstanceRecord& record) const {
        return open(record, user, {.looking = std::chrono::hours(1)});
    }
    Refusal refused(const ambrel::InstanceRecord& record) const {
        auto refusal = expectThrow<Refusal>([&] { opened(record); });
        CHECK(refusal.kind == Kind::endedAtOnce);
        CHECK(refusal.subject == nameFor(record, user));
        CHECK(isOneLine(refusal.sentence()));
        return refusal;
    }
    /// A document, with a script in the runner's place.
    ambrel::InstanceRecord document(const std::string& script) const {
        auto wanted = request();
        wanted.kind = ShortcutKind::file;
        wanted.openPath = writeFile(home / "paper");
        return madeWith(script, wanted);
    }
    /// The same of a web site.
    ambrel::InstanceRecord site(const std::string& script, const std::string& name = "Work") const {
        auto wanted = request(name);
        wanted.kind = ShortcutKind::web;
        wanted.url = "https://example.org/";
        return madeWith(script, wanted);
    }

private:
    ambrel::InstanceRecord madeWith(const std::string& script, CreateRequest wanted) const {
        wanted.commandPath.clear();
        wanted.runner = writeScript(tmp / "script", script);
        return make(wanted).record;
    }
};

} // namespace

TEST_CASE("what still runs after the look at it is opened, and runs on") {
    const Openable scene;
    const auto ready = makeFifo(scene.tmp / "ready");
    const auto go = makeFifo(scene.tmp / "go");
    const auto record =
        scene.made("Work", "echo $PPID >" + quoted(ready) + "; read x <" + quoted(go));

    CHECK(open(record, scene.user, {.looking = std::chrono::milliseconds(0)}) == Opened::runs);

    const auto runner = std::stoi(readFile(ready));
    CHECK(Running::now(scene.user).of(record).heads == Ids{runner});
    writeFile(go, "x\n");
    int status = 0;
    CHECK(::waitpid(runner, &status, 0) == runner);
}

TEST_CASE("a command that has ended has done what it was to do, or is told with its last lines") {
    const Openable scene;
    CHECK(scene.opened(scene.made("Fine", "echo out")) == Opened::ended);
    const auto refusal = scene.refused(scene.made(
        "Work", "for n in 1 2 3 4 5 6 7 8 9 10 11; do echo line $n; done; printf 'a\\033b\\n\\n' "
                ">&2; exit 3"));

    CHECK(refusal.sentence() == "\"Work\" ended at once with status 3.");
    REQUIRE(refusal.alternatives.size() == 10);
    CHECK(refusal.alternatives.front() == "line 3");
    CHECK(refusal.alternatives.back() == "a\\u{1B}b");
    writeFile(scene.logOf("Few"), "of an earlier start\n");
    const auto few = scene.refused(scene.made("Few", "echo only this; exit 4"));
    CHECK(few.alternatives == Strings{"only this"});
}

TEST_CASE("a runner that fails by itself is told in its own words") {
    const Openable scene;
    const auto record = scene.made();
    writeFile(record.bundleURL + "/Contents/Resources/instance.json", "{");

    const auto refusal = scene.refused(record);

    REQUIRE(refusal.alternatives.size() == 1);
    CHECK(beginsWith(refusal.alternatives.front(), "runner: unreadable instance.json"));
}

TEST_CASE("an application of which nothing runs any more was not opened, whatever its status") {
    const Openable scene;

    const auto handedOver = scene.refused(scene.madeOfApp("echo over to you; exit 0"));

    CHECK(contains(handedOver.sentence(), "status 0"));
    CHECK(contains(handedOver.sentence(), "handed over"));
    CHECK(handedOver.alternatives == Strings{"over to you"});
    CHECK_FALSE(contains(handedOver.sentence(), "session bus"));
}

TEST_CASE("that an instance shares the session bus is told where it may have handed over") {
    const Openable scene;
    auto record = scene.madeOfApp("exit 0");
    record.config.infoPlistOverrides.emplace(ambrel::sharedBusKey, "true");

    CHECK(contains(scene.refused(record).sentence(),
                   "outside the instance, with which it shares the names on the session bus "
                   "(sharedBus)."));
}

TEST_CASE("a launcher that leaves its program running has opened it") {
    const Openable scene;
    const auto ready = makeFifo(scene.tmp / "ready");
    const auto go = makeFifo(scene.tmp / "go");
    const auto record =
        scene.madeOfApp("sh -c 'echo $$ >" + ready + "; read x <" + go + "' & read x <" + ready);

    CHECK(scene.opened(record) == Opened::runs);

    CHECK(scene.runs(record).size() == 1);
    writeFile(go, "x\n");
}

TEST_CASE("a second start that hands over to the instance's own copy is told as that") {
    const Openable scene;
    const auto record = scene.madeOfApp("exit 0");
    const Waiting copy({{"HOME", scene.homeOf()}});

    CHECK(scene.opened(record) == Opened::ranAlready);
}

TEST_CASE("a document is opened when its opener says so, and leaves neither home nor log") {
    const Openable scene;

    CHECK(scene.opened(scene.document("exit 0")) == Opened::handedOn);

    CHECK_FALSE(isThere(scene.homeOf()));
}

TEST_CASE("an opener that fails is told with what it wrote") {
    const Openable scene;

    const auto refusal = scene.refused(scene.document("echo nowhere; echo no handler >&2; exit 4"));

    CHECK(refusal.alternatives == Strings{"no handler"});
    CHECK_FALSE(isThere(scene.homeOf()));
}

TEST_CASE("a window that cannot come is told in the runner's words, which are not the page's log") {
    const Openable scene;
    const auto record =
        scene.site("echo 'runner: failed to launch instance — no display' >&2; exit 1");
    writeFile(scene.logOf(), "badge: 3\n");

    const auto refusal = scene.refused(record);

    CHECK(refusal.sentence() == "\"Work\" ended at once with status 1.");
    CHECK(refusal.alternatives == Strings{"runner: failed to launch instance — no display"});
    CHECK(readFile(scene.logOf()) == "badge: 3\n");
}

TEST_CASE("a window that was closed again at once has ended, and handed over to nobody") {
    const Openable scene;

    CHECK(scene.opened(scene.site("exit 0")) == Opened::ended);
    const auto record = scene.site("exit 0", "Other");
    const Waiting first({{"HOME", scene.homeOf("Other")}});
    CHECK(scene.opened(record) == Opened::ranAlready);
}

TEST_CASE("what is to be opened reaches the runner byte for byte") {
    const Openable scene;
    auto wanted = scene.request();
    wanted.kind = ShortcutKind::app;
    wanted.commandPath.clear();
    wanted.targetApp = scene.installApp();
    wanted.runner = writeScript(scene.tmp / "script", "printf '<%s>' \"$@\" >&2; exit 5");
    const auto record = scene.make(wanted).record;

    const auto refusal = expectThrow<Refusal>([&] {
        open(record, scene.user,
             {.words = {"/-- a", "x:b  $x", "/\"'"}, .looking = std::chrono::hours(1)});
    });

    CHECK(refusal.alternatives == Strings{"<--open></-- a><x:b  $x></\"'>"});
}

} // namespace korvane::test
