#include "Manager.h"

#include "Ambrel/Platform/FileSystem.h"
#include "Support/Waiting.h"

#include <sstream>
#include <unistd.h>

namespace korvane::test {

namespace {

/// A manager with instances whose commands wait to be ended.
struct Fixture {
    Manager manager;

    Path createWaiting(const std::string& name) const {
        const auto ready = makeFifo(manager.tmp / (name + " ready"));
        const auto go = makeFifo(manager.tmp / (name + " go"));
        return manager.create({"command", name, "/bin/sh", "--", "-c",
                               "echo $$ $PPID >" + quoted(ready) + "; read x <" + quoted(go)});
    }
    /// The ids of its command and its runner.
    std::pair<int, int> awaitStart(const std::string& name) const {
        std::pair<int, int> ids;
        std::istringstream(readFile(manager.tmp / (name + " ready"))) >> ids.first >> ids.second;
        return ids;
    }
};

} // namespace

TEST_CASE("stop ends what open started, and list and show tell what runs") {
    const Fixture fixture;
    const auto& manager = fixture.manager;
    fixture.createWaiting("Work");
    manager.create({"command", "Other", aProgram});
    CHECK(manager.json({"list", "--json"})[1]["running"] == false);
    manager.run({"open", "Work"});
    const auto [command, runner] = fixture.awaitStart("Work");

    const auto json = manager.json({"list", "--json"});
    CHECK(json[0]["running"] == false);
    CHECK_FALSE(json[0].contains("processes"));
    CHECK(json[1]["running"] == true);
    CHECK(json[1]["processes"] == nlohmann::json({runner, command}));
    CHECK(manager.json({"show", "Work", "--json"})["running"] == true);
    CHECK(contains(manager.result({"list"}), "Work   command  running  /bin/sh"));
    const auto shown = manager.result({"show", "Work"});
    CHECK(contains(shown, "true: processes " + std::to_string(command) + " ("));
    CHECK(contains(shown, " and " + std::to_string(runner) + " (runner)\n"));

    const auto done = manager.run({"stop", "Work"});
    CHECK(done.status == 0);
    CHECK(done.error == "Stopped \"Work\".\n");
    CHECK(manager.json({"show", "Work", "--json"})["running"] == false);
    CHECK(manager.run({"stop", "Work"}).error == "\"Work\" is not running.\n");
}

TEST_CASE("stop takes several names, and looks at all before it ends one") {
    const Fixture fixture;
    const auto& manager = fixture.manager;
    fixture.createWaiting("One");
    fixture.createWaiting("Two");
    manager.run({"open", "One", "Two"});
    fixture.awaitStart("One");
    fixture.awaitStart("Two");

    CHECK(says(manager.refusal({"stop", "One", "Three"}), "No instance is called \"Three\"."));
    CHECK(manager.json({"show", "One", "--json"})["running"] == true);

    const auto done = manager.run({"stop", "One", "Two", "One"});
    CHECK(done.status == 0);
    CHECK(done.error == "Stopped \"One\".\nStopped \"Two\".\n");
}

TEST_CASE("while an instance runs it is neither deleted, replaced nor migrated") {
    const Fixture fixture;
    const auto& manager = fixture.manager;
    const auto bundle = fixture.createWaiting("Work");
    manager.run({"open", "Work"});
    fixture.awaitStart("Work");

    for (const Strings& words :
         {Strings{"delete", "Work"}, Strings{"delete", "Work", "--data", "--yes"},
          Strings{"migrate", "Work"}, Strings{"edit", "Work", "--name", "Other"},
          Strings{"create", "command", "--replace", "--runner", KORVANE_TEST_RUNNER, "Work",
                  aProgram}}) {
        const auto text = manager.refusal(words);
        CHECK(says(text, "The instance \"Work\" is running"));
        CHECK(says(text, "Stop it first with: korvane stop Work\n"));
    }

    CHECK(isRealFolder(bundle));
    manager.result({"stop", "Work"});
    manager.result({"delete", "Work", "--data", "--yes"});
    CHECK_FALSE(isThere(bundle));
}

TEST_CASE("what the user types at a shell in or about the home does not make an instance run") {
    const Manager manager;
    manager.create({"command", "Work", aProgram});
    manager.result({"run", "Work"});
    const auto home = manager.instanceHome("Work");
    const auto log = home + "/korvane-instance.log";
    const Waiting shell({}, "cd " + quoted(home));
    auto pager = manager.setup({"logs", "-f", "Work"});
    const RunningProgram following(pager);

    CHECK(manager.json({"show", "Work", "--json"})["running"] == false);
    {
        const Waiting writer({}, "exec >>" + quoted(log));
        CHECK(manager.json({"show", "Work", "--json"})["processes"] ==
              nlohmann::json({writer.id()}));
    }

    // Who asks does not count, wherever the answer goes.
    auto asking = manager.setup({"show", "Work", "--json"});
    asking.command[2] = "exec \"$@\" </dev/null >>" + quoted(log);
    asking.environment["HOME"] = home;
    CHECK(run(asking).status == 0);
    CHECK(contains(readFile(log), "\"running\": false"));
}

TEST_CASE("list and show mark what an instance opens and is gone") {
    const Manager manager;
    manager.installApp("Mail", "org.example.mail");
    manager.create({"app", "App", "Mail"});
    const auto paper = writeFile(manager.tmp / "paper");
    manager.create({"file", "Paper", paper});
    const auto tool = writeScript(manager.tmp / "tool", "exit 0");
    manager.create({"command", "Tool", tool});
    manager.create({"web", "Web", "https://example.org/"});
    CHECK_FALSE(contains(manager.result({"list"}), "gone"));
    CHECK_FALSE(manager.json({"show", "App", "--json"}).contains("missing"));

    ambrel::fileSystem::removeTree(manager.applications() + "/Mail.app");
    REQUIRE(::unlink(paper.c_str()) == 0);
    REQUIRE(::unlink(tool.c_str()) == 0);

    const auto table = manager.result({"list"});
    CHECK(contains(table, "app      application is gone"));
    CHECK(contains(table, "file     document is gone"));
    CHECK(contains(table, "command  command is gone"));
    const auto json = manager.json({"list", "--json"});
    CHECK(json[0]["missing"] == manager.applications() + "/Mail.app");
    CHECK(json[1]["missing"] == paper);
    CHECK_FALSE(json[3].contains("missing"));
    CHECK(contains(manager.result({"show", "Paper"}), paper));
}

} // namespace korvane::test
