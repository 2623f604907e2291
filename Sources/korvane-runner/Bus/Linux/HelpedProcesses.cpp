#include "korvane-runner/Bus/Linux/HelpedProcesses.h"

#include "Ambrel/Application/AppBundle.h"
#include "Ambrel/Base/TextParts.h"
#include "Ambrel/Platform/Linux/DataFolders.h"
#include "Ambrel/Platform/PropertyList.h"
#include "korvane-runner/Bus/Linux/SmallFile.h"

#include <algorithm>
#include <csignal>
#include <sys/wait.h>

namespace korvane::runner::bus {

using namespace ambrel;

namespace {

Environment environmentOf(const ChildProcess& program) {
    return program.setup().environment.value_or(Environment());
}

std::vector<Path> dataFoldersOf(const Environment& environment, const Path& userData) {
    return dataFolders({valueOf(environment, "XDG_DATA_HOME"), userData},
                       valueOf(environment, "XDG_DATA_DIRS"));
}

} // namespace

HelpedProcesses::HelpedProcesses(Setup setup, const DescriptorLimit& limit)
    : setup_(std::move(setup)), limit_(limit),
      services_({.environment = environmentOf(setup_.program),
                 .output = setup_.program.setup().standardOutput,
                 .address = setup_.address},
                limit),
      shown_(dataFoldersOf(services_.environment(), setup_.userData), tryReadSmallFile) {}

void HelpedProcesses::launch() {
    const DescriptorLimit::AsBefore asBefore(limit_);
    setup_.program.launch();
    program_ = setup_.program.processIdentifier();
}

std::optional<HelpedProcesses::Ended> HelpedProcesses::reapNext() {
    const auto child = nextEndedChild();
    if (!child) return std::nullopt;
    const bool isProgram = child->process == program_;
    Ended ended{.status = child->status, .isProgram = isProgram};
    asked_.erase(child->process);
    if (isProgram && !isMoved_) {
        setup_.program.waitUntilExit();
    } else {
        ended.service = services_.reap(child->process);
        if (!ended.service) ::waitpid(child->process, nullptr, WNOHANG);
    }
    if (isProgram) program_ = 0;
    return ended;
}

std::optional<int> HelpedProcesses::continueAsService() {
    if (services_.count() == 0) return std::nullopt;
    const auto app = AppBundle::read(setup_.target);
    forgetPropertyLists();
    const auto service = app ? services_.processOf(app->bundleId) : std::nullopt;
    if (!service) return std::nullopt;
    program_ = *service;
    isMoved_ = true;
    hadApplication_ = true;
    return service;
}

std::vector<int> HelpedProcesses::applications(const std::vector<BusProxy::Client>& ofServices) {
    std::vector<int> found;
    const auto hasWindows = [this](const auto& name) { return shown_.contains(name); };
    for (const auto& client : ofServices) {
        if (!std::ranges::any_of(client.names, hasWindows)) continue;
        found.push_back(static_cast<int>(client.process));
    }
    hadApplication_ |= !found.empty();
    return found;
}

void HelpedProcesses::noteApplications(const std::vector<BusProxy::Client>& ofServices) {
    if (!hadApplication_) applications(ofServices);
}

LeftProcesses HelpedProcesses::left() {
    std::vector<ChildProcessKind> children;
    for (const int process : childrenOfThisProcess()) {
        children.push_back({process, kinOf(process)});
    }
    return LeftProcesses::among(children, hadApplication_);
}

ChildProcessKind::Kin HelpedProcesses::kinOf(int process) {
    using Kin = ChildProcessKind::Kin;
    if (process == program_) return Kin::program;
    if (services_.isService(process)) return Kin::service;
    if (isOfOtherInstance(process)) return Kin::otherInstance;
    return services_.isOfService(process) ? Kin::ofService : Kin::unknown;
}

void HelpedProcesses::sendToProgram(int signal) const noexcept {
    if (!programRuns()) return;
    if (isMoved_) services_.sendSignal(program_, signal);
    if (!isMoved_) setup_.program.sendSignal(signal);
}

void HelpedProcesses::askServicesToEnd() {
    services_.rememberDescendants();
    services_.askToEnd();
    for (const int process : left().services) {
        if (asked_.insert(process).second) ::kill(process, SIGTERM);
    }
}

void HelpedProcesses::askApplicationsToEnd(const std::vector<BusProxy::Client>& ofServices) {
    for (const int process : applications(ofServices)) {
        if (process != program_) services_.sendSignal(process, SIGTERM);
    }
}

void HelpedProcesses::askLeftToEnd() {
    for (const int process : left().programs) ::kill(process, SIGTERM);
}

} // namespace korvane::runner::bus
