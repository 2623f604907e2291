#pragma once

#include "Manager/Operations/Scene.h"
#include "Manager/Rules/Running.h"
#include "Support/Waiting.h"

#include <csignal>
#include <sstream>

namespace korvane::test {

/// A scene whose instances have the real runner, and run a shell until it is let go.
struct RunningScene : Scene {
    ambrel::InstanceRecord made(const std::string& name = "Work",
                                const std::string& script = "true") const {
        auto wanted = request(name);
        wanted.runner = KORVANE_TEST_RUNNER;
        wanted.commandArgs = {"-c", script};
        return make(wanted).record;
    }
    /// One of an application whose program runs this script.
    ambrel::InstanceRecord madeOfApp(const std::string& script,
                                     const std::string& name = "Work") const {
        auto wanted = request(name);
        wanted.kind = ambrel::ShortcutKind::app;
        wanted.runner = KORVANE_TEST_RUNNER;
        wanted.targetApp = AppBundleBuilder(home / "Applications/Tool.app")
                               .identifier("org.example.tool")
                               .executable("tool", script)
                               .write();
        return make(wanted).record;
    }
    ambrel::InstanceRecord withHome(ambrel::InstanceRecord record, const Path& place) const {
        record.config.instanceHome = place;
        return record;
    }
    Path logOf(const std::string& name = "Work") const {
        return homeOf(name) + "/korvane-instance.log";
    }
    std::vector<int> runs(const ambrel::InstanceRecord& record) const {
        auto ids = Running::now(user).of(record).ids;
        std::ranges::sort(ids);
        return ids;
    }
    /// What starts the instance's runner for this scene's user.
    ProgramSetup runnerOf(const ambrel::InstanceRecord& record) const {
        return {.command = {record.bundleURL + "/Contents/MacOS/runner"},
                .environment = {{"CFFIXED_USER_HOME", home.path()}, {"HOME", home.path()}}};
    }
};

using Ids = std::vector<int>;

/// An instance whose command tells its own id and its runner's, and waits.
struct Started : RunningScene {
    Path ready = makeFifo(tmp / "ready");
    Path go = makeFifo(tmp / "go");
    ambrel::InstanceRecord record =
        made("Work", "echo $$ $PPID >" + quoted(ready) + "; read x <" + quoted(go));
    RunningProgram program{runnerOf(record)};
    int command = 0;
    int runner = 0;

    Started() { std::istringstream(readFile(ready)) >> command >> runner; }
    ~Started() { ::kill(command, SIGKILL); }
    Started(const Started&) = delete;
    Started& operator=(const Started&) = delete;
};

} // namespace korvane::test
