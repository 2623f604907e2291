#pragma once

#include "Ambrel/Platform/ChildProcess.h"
#include "korvane-runner/Bus/LeftProcesses.h"
#include "korvane-runner/Bus/Linux/BusProxy.h"
#include "korvane-runner/Bus/Linux/StartedServices.h"
#include "korvane-runner/Bus/ShownApplications.h"

namespace korvane::runner::bus {

/// The processes that a helper looks after, all of them children of it: the program, the services
/// that were started for it, and what either has left behind.
class HelpedProcesses {
public:
    struct Setup {
        ambrel::ChildProcess program; ///< which is not launched yet
        ambrel::Path target;          ///< the application
        ambrel::Path userData;        ///< the user's own folder of data
        std::string address;          ///< of the instance's bus
    };

    /// `limit` must outlive it.
    HelpedProcesses(Setup setup, const DescriptorLimit& limit);

    /// Throws as ChildProcess::launch() does.
    void launch();
    /// See HostedProgram::missed().
    bool missed(int signal) const noexcept { return setup_.program.missed(signal); }

    /// The process that counts as the program; 0 where it has ended.
    int program() const noexcept { return program_; }
    bool programRuns() const noexcept { return program_ != 0; }
    StartedServices& services() noexcept { return services_; }

    struct Ended {
        int status; ///< as wait(2) tells it
        bool isProgram;
        std::optional<StartedServices::Ended> service{};
    };
    /// Waits for one child that has ended. Absent where there is none.
    std::optional<Ended> reapNext();

    /// Has a service be the program from now on, where one has the application's name: a client
    /// that has had it open its windows has done its work. Returns its process.
    std::optional<int> continueAsService();

    /// The processes of services with windows, of those that are connected.
    std::vector<int> applications(const std::vector<BusProxy::Client>& ofServices);
    /// Remembers whether there was one, for left(): a service may give back its name, or end,
    /// before anybody asks.
    void noteApplications(const std::vector<BusProxy::Client>& ofServices);
    /// What has been left behind.
    LeftProcesses left();

    void sendToProgram(int signal) const noexcept;
    /// Asks all services to end, and what they have left behind: once each.
    void askServicesToEnd();
    /// Asks services with windows to end, but not one that is the program.
    void askApplicationsToEnd(const std::vector<BusProxy::Client>& ofServices);
    /// Asks what the program has left behind.
    void askLeftToEnd();

private:
    ChildProcessKind::Kin kinOf(int process);

    Setup setup_;
    const DescriptorLimit& limit_;
    StartedServices services_;
    ShownApplications shown_;
    int program_ = 0;
    bool isMoved_ = false; ///< whether the program is a service
    bool hadApplication_ = false;
    std::set<int> asked_; ///< what services have left behind, and was asked to end
};

} // namespace korvane::runner::bus
