#pragma once

#include "Ambrel/Platform/ChildProcess.h"
#include "korvane-runner/Bus/Linux/DescriptorLimit.h"
#include "korvane-runner/Bus/Linux/ProcessFamily.h"
#include "korvane-runner/Bus/Linux/ServiceProcesses.h"

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <vector>

namespace korvane::runner::bus {

/// The services that this process has started as its children. They write into the instance's log,
/// are in sessions of their own, and know the bus that has asked for them.
class StartedServices final : public ServiceProcesses {
public:
    struct Setup {
        ambrel::Environment environment;                 ///< the program's
        std::shared_ptr<const ambrel::OwnedFd> output{}; ///< null: this process's
        std::string address;                             ///< of the instance's bus
    };

    /// `limit` must outlive it.
    StartedServices(Setup setup, const DescriptorLimit& limit);

    std::optional<std::string> start(const ServiceFile& service,
                                     const ServiceVariables& additions) override;
    bool askToEnd(std::string_view name) override;
    bool isOfService(std::int64_t process) override;
    /// Remembers what is below the services now: it is theirs, also when they have ended.
    void rememberDescendants();

    struct Ended {
        std::string name; ///< for which it was started
        bool isLatest;    ///< whether none was started for that name since
    };
    /// Reaps the child `process`, which has ended. Absent, with nothing done, where it is no
    /// service.
    std::optional<Ended> reap(int process);

    /// The process that was started for `name`, the last of those that run.
    std::optional<int> processOf(std::string_view name) const;
    const ambrel::Environment& environment() const { return setup_.environment; }
    bool isService(int process) const { return services_.contains(process); }
    std::size_t count() const { return services_.size(); }
    void sendSignal(int process, int signal) const noexcept;

    /// Asks all of them to end that were not asked yet.
    void askToEnd();

private:
    struct Service {
        std::string name;
        ambrel::ChildProcess process;
        std::uint64_t number; ///< higher than that of all from before
        bool isAsked = false;
    };

    using Lookup = std::function<std::optional<RunningProcess>(int id)>;

    bool isBelowService(const RunningProcess& process, const Lookup& lookup);
    bool isRemembered(const RunningProcess& process) const;
    ambrel::Environment environmentWith(const ServiceVariables& additions) const;

    Setup setup_;
    const DescriptorLimit& limit_;
    std::map<int, Service> services_; ///< by process
    std::uint64_t lastNumber_ = 0;
    std::map<int, std::string> descendants_; ///< of services, each with its start
};

} // namespace korvane::runner::bus
