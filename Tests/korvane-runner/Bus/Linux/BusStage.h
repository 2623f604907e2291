#pragma once

#include "Ambrel/Platform/OwnedFd.h"
#include "korvane-runner/Desktop/Linux/PrivateBus.h"
#include "korvane-runner/Signals.h"
#include "korvane-runner/Wrapper.h"

#include <vector>

namespace korvane::test {

/// An instance of an application, a user with a bus, and a folder for sockets. Programs are actors
/// (see Actor.cpp), which report to `report`.
class BusStage {
public:
    BusStage();
    BusStage(const BusStage&) = delete;
    BusStage& operator=(const BusStage&) = delete;
    /// Kills what a failed test has left.
    ~BusStage();

    /// The application's program does these steps from the next start on. Returns this stage.
    BusStage& act(const Strings& steps);
    /// Its program is that command.
    void runCommand(const std::string& command);
    /// What is called by `name` is started to do these steps.
    void addService(const std::string& name, const Strings& steps) const;
    void addCommandService(const std::string& name, const std::string& command) const;
    void addEntry(const std::string& name) const;
    /// A pipe to wait at.
    Path gate(const std::string& name) const { return wrapper.tmp / name; }
    void open(const Path& gate) const { writeFile(gate, "x\n"); }

    /// The processes that run the wrapper's runner now.
    std::vector<int> runners() const { return runners(wrapper.runner); }
    /// Those that run another wrapper's.
    std::vector<int> runners(const Path& runner) const;
    /// Returns when none does any more. All that were started have been waited for.
    void awaitHelpers() const;
    /// The one beside `runner`, which runs.
    int helperBeside(int runner) const;

    /// The names on the user's bus that are no unique ones, but the bus's own.
    Strings namesOnBus() const;

    /// What programs of the instance are told the bus is.
    std::string address() const;
    Path socketFolder() const;

    Wrapper wrapper;
    ambrel::InstanceConfig config;
    Path home = wrapper.tmp / "home";
    Path runtime = makeFolder(wrapper.tmp / "run");
    PrivateBus bus;
    Fifo report{wrapper.tmp / "report"};

private:
    std::string actorCommand(const Strings& steps) const;

    ambrel::OwnedFd writer_;
    ScopedVariable runtimeFolder_{"XDG_RUNTIME_DIR", runtime};
    ScopedVariable dataFolders_{"XDG_DATA_DIRS", wrapper.tmp / "share"};
};

/// A runner that is started and not waited for yet, with its process.
class Started {
public:
    explicit Started(const BusStage& stage) : Started({stage.wrapper.runner}) {}
    explicit Started(const Strings& command);
    Started(const Started&) = delete;
    Started& operator=(const Started&) = delete;
    ~Started();

    int id() const { return id_; }
    void send(int signal) const;
    /// What waitpid(2) says.
    int wait();
    /// The exit status; one that a signal ended is a failure.
    int waitStatus();

private:
    int id_ = -1;
};

} // namespace korvane::test
