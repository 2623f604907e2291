#include "BusStage.h"

#include "Support/Waiting.h"
#include "korvane-runner/Bus/PrivateNames.h"

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace korvane::test {

namespace {

int parentOf(int process) {
    std::ifstream status("/proc/" + std::to_string(process) + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("PPid:", 0) == 0) return std::stoi(line.substr(5));
    }
    return 0;
}

} // namespace

BusStage::BusStage() : config(smallestConfig()) {
    // What a runner leaves behind can be waited for then.
    REQUIRE(::prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0) == 0);
    setMode(runtime, 0700);
    config.instanceHome = home;
    // Between two lines nobody writes, which is no end.
    writer_ = ambrel::OwnedFd::open("open", report.path(), O_WRONLY);
}

BusStage::~BusStage() {
    for (const int process : runners()) ::kill(process, SIGKILL);
}

std::string BusStage::actorCommand(const Strings& steps) const {
    std::string command = std::string("exec ") + KORVANE_TEST_ACTOR + " " + quoted(report.path());
    for (const auto& step : steps) command += " " + quoted(step);
    return command;
}

void BusStage::runCommand(const std::string& command) {
    config.targetAppPath = AppBundleBuilder(wrapper.tmp / "T.app")
                               .identifier("org.example.Target")
                               .executable("run", command)
                               .write();
    wrapper.configure(config);
}

BusStage& BusStage::act(const Strings& steps) {
    runCommand(actorCommand(steps));
    return *this;
}

void BusStage::addService(const std::string& name, const Strings& steps) const {
    addCommandService(name, actorCommand(steps));
}

void BusStage::addCommandService(const std::string& name, const std::string& command) const {
    const auto script = writeScript(wrapper.tmp / ("serve-" + name), command);
    writeFile(home + "/.local/share/dbus-1/services/" + name + ".service",
              "[D-BUS Service]\nName=" + name + "\nExec=" + script + "\n");
}

void BusStage::addEntry(const std::string& name) const {
    writeFile(home + "/.local/share/applications/" + name + ".desktop",
              "[Desktop Entry]\nType=Application\nName=A\n");
}

std::vector<int> BusStage::runners(const Path& runner) const {
    std::vector<int> found;
    for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
        std::error_code error;
        const auto program = std::filesystem::read_symlink(entry.path() / "exe", error);
        if (!error && program == runner) {
            found.push_back(std::stoi(entry.path().filename().string()));
        }
    }
    return found;
}

void BusStage::awaitHelpers() const {
    for (const int process : runners()) {
        REQUIRE(::waitpid(process, nullptr, 0) == process);
    }
    CHECK(runners().empty());
}

int BusStage::helperBeside(int runner) const {
    for (const int process : runners()) {
        if (parentOf(process) == runner) return process;
    }
    return 0;
}

Strings BusStage::namesOnBus() const {
    const auto answer = BusPeer(bus).ask("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                         "org.freedesktop.DBus", "ListNames", nullptr);
    Strings names;
    for (std::size_t at = answer.find('\''); at != std::string::npos;) {
        const auto end = answer.find('\'', at + 1);
        const auto name = answer.substr(at + 1, end - at - 1);
        if (name[0] != ':' && name != "org.freedesktop.DBus") names.push_back(name);
        at = answer.find('\'', end + 1);
    }
    return names;
}

Path BusStage::socketFolder() const {
    const auto folders = runtime + "/korvane/bus";
    const auto names = isThere(folders) ? namesIn(folders) : Strings();
    return names.size() == 1 ? folders + "/" + names[0] : Path();
}

std::string BusStage::address() const { return "unix:path=" + socketFolder() + "/socket"; }

Started::Started(const Strings& command) {
    std::vector<char*> arguments;
    for (const auto& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    id_ = ::fork();
    if (id_ == 0) {
        ::execv(arguments[0], arguments.data());
        ::_exit(127);
    }
    REQUIRE(id_ > 0);
}

Started::~Started() {
    if (id_ <= 0) return;
    ::kill(id_, SIGKILL);
    ::waitpid(id_, nullptr, 0);
}

void Started::send(int signal) const { REQUIRE(::kill(id_, signal) == 0); }

int Started::wait() {
    int status = 0;
    REQUIRE(::waitpid(id_, &status, 0) == id_);
    id_ = -1;
    return status;
}

int Started::waitStatus() {
    const int status = wait();
    CHECK(WIFEXITED(status));
    return WEXITSTATUS(status);
}

} // namespace korvane::test
