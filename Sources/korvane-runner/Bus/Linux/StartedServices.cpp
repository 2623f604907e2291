#include "korvane-runner/Bus/Linux/StartedServices.h"

#include "Ambrel/Instance/OwnNames.h"
#include "Ambrel/Platform/FileError.h"
#include "Ambrel/Platform/FileSystem.h"
#include "Ambrel/Platform/StartTokens.h"

#include <algorithm>
#include <cerrno>
#include <unistd.h>

namespace korvane::runner::bus {

namespace {

using namespace ambrel;

constexpr const char* starterVariable = "DBUS_STARTER_ADDRESS";

/// As a shell finds it.
std::optional<Path> findProgram(const std::string& word, const Environment& environment) {
    if (word.find('/') != std::string::npos) return word;
    const auto path = environment.find("PATH");
    std::string_view rest = "/usr/bin:/bin";
    if (path != environment.end()) rest = path->second;
    while (!rest.empty()) {
        const auto folder = rest.substr(0, rest.find(':'));
        auto program = paths::join(folder, word);
        if (!folder.empty() && fileSystem::isExecutableFile(program)) return program;
        rest.remove_prefix(std::min(folder.size() + 1, rest.size()));
    }
    return std::nullopt;
}

} // namespace

StartedServices::StartedServices(Setup setup, const DescriptorLimit& limit)
    : setup_(std::move(setup)), limit_(limit) {
    eraseStartTokens(setup_.environment);
}

Environment StartedServices::environmentWith(const ServiceVariables& additions) const {
    auto environment = setup_.environment;
    for (const auto& [name, value] : additions) environment[name] = value;
    environment[busAddressVariable] = setup_.address;
    environment[starterVariable] = setup_.address;
    environment["DBUS_STARTER_BUS_TYPE"] = "session";
    return environment;
}

std::optional<std::string> StartedServices::start(const ServiceFile& service,
                                                  const ServiceVariables& additions) {
    if (service.command.empty()) return errorReason(ENOENT);
    auto environment = environmentWith(additions);
    const auto program = findProgram(service.command.front(), environment);
    if (!program) return errorReason(ENOENT);
    ChildProcess process({.executable = *program,
                          .arguments = {service.command.begin() + 1, service.command.end()},
                          .environment = std::move(environment),
                          .currentDirectory = "/",
                          .standardOutput = setup_.output,
                          .standardError = setup_.output,
                          .processName = service.command.front(),
                          .ownSession = true});
    try {
        const DescriptorLimit::AsBefore asBefore(limit_);
        process.launch();
    } catch (const ChildProcessError& error) {
        return error.reason;
    }
    const int id = process.processIdentifier();
    services_.insert_or_assign(id, Service{service.name, std::move(process), ++lastNumber_});
    return std::nullopt;
}

std::optional<int> StartedServices::processOf(std::string_view name) const {
    std::optional<int> latest;
    for (const auto& [process, service] : services_) {
        if (service.name != name) continue;
        if (!latest || service.number > services_.at(*latest).number) latest = process;
    }
    return latest;
}

bool StartedServices::askToEnd(std::string_view name) {
    const auto latest = processOf(name);
    if (!latest) return false;
    auto& service = services_.at(*latest);
    service.process.terminate();
    service.isAsked = true;
    return true;
}

bool StartedServices::isOfService(std::int64_t process) {
    const auto id = static_cast<int>(process);
    if (isService(id) || startVariableOf(id, starterVariable) == setup_.address) return true;
    constexpr std::size_t mostRemembered = 1000;
    if (descendants_.size() >= mostRemembered) rememberDescendants();
    const auto seen = runningProcess(id);
    return seen && isBelowService(*seen, runningProcess);
}

// What a service starts with an environment of its own does not tell whose it is, and when the
// service ends it is left to this process like everything else.
bool StartedServices::isBelowService(const RunningProcess& process, const Lookup& lookup) {
    constexpr int mostGenerations = 64; // processes that come and go meanwhile can make a circle
    auto above = std::optional(process);
    for (int i = 0; above && i < mostGenerations; ++i) {
        if (isService(above->id) || isRemembered(*above)) {
            descendants_.insert_or_assign(process.id, process.start);
            return true;
        }
        if (above->parent <= 1 || above->parent == ::getpid()) return false;
        above = lookup(above->parent);
    }
    return false;
}

bool StartedServices::isRemembered(const RunningProcess& process) const {
    const auto found = descendants_.find(process.id);
    return found != descendants_.end() && found->second == process.start;
}

void StartedServices::rememberDescendants() {
    std::map<int, RunningProcess> processes;
    for (auto& process : runningProcesses()) processes.emplace(process.id, std::move(process));
    const auto lookup = [&](int id) {
        const auto found = processes.find(id);
        return found == processes.end() ? std::nullopt : std::optional(found->second);
    };
    std::erase_if(descendants_, [&](const auto& entry) {
        const auto now = lookup(entry.first);
        return !now || now->start != entry.second;
    });
    for (const auto& [id, process] : processes) isBelowService(process, lookup);
}

std::optional<StartedServices::Ended> StartedServices::reap(int process) {
    const auto found = services_.find(process);
    if (found == services_.end()) return std::nullopt;
    Ended ended{found->second.name, processOf(found->second.name) == process};
    found->second.process.waitUntilExit();
    services_.erase(found);
    return ended;
}

void StartedServices::sendSignal(int process, int signal) const noexcept {
    const auto found = services_.find(process);
    if (found != services_.end()) found->second.process.sendSignal(signal);
}

void StartedServices::askToEnd() {
    for (auto& [process, service] : services_) {
        if (!service.isAsked) service.process.terminate();
        service.isAsked = true;
    }
}

} // namespace korvane::runner::bus
