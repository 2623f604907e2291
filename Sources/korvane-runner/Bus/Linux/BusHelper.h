#pragma once

#include "Ambrel/Instance/ResolvedInstance.h"
#include "korvane-runner/Bus/BusLifetime.h"
#include "korvane-runner/Bus/EndRequest.h"
#include "korvane-runner/Bus/Linux/HelpedProcesses.h"
#include "korvane-runner/Bus/Linux/HelperBus.h"
#include "korvane-runner/Bus/Linux/RunnerLink.h"

#include <memory>
#include <optional>

namespace korvane::runner::bus {

/// The process beside a runner in which the instance's bus is: parent of the program, and of
/// whatever that leaves behind. It stays for as long as anybody needs the bus, whatever becomes of
/// the runner, which it tells of the program.
class BusHelper {
public:
    struct Setup {
        const ambrel::ResolvedInstance& instance;
        const ambrel::UserPlaces& user;
        ambrel::Environment environment; ///< what this process was given
        std::vector<std::string> opened;
        BusAddress bus; ///< the user's
        std::string prefix;
        SocketClaim claim;
        SocketPlace place;
        HelperChannel channel;
        int runner; ///< its process
    };

    explicit BusHelper(Setup setup);
    ~BusHelper();

    /// For a process of its own that has just been forked. Returns when nobody needs it any more.
    void run() noexcept;

private:
    bool prepare() noexcept;
    void separate();
    void prepareProgram();
    bool launch() noexcept;

    void runLoop() noexcept;
    void look();
    void lookAndStep();
    void reapAll();
    void programEnded();
    BusLifetime::Present present();
    void peopleChanged();

    void hear();
    void takeSignals();
    void requestEnd();

    RunnerLink runner_;
    const ambrel::ResolvedInstance& instance_;
    const ambrel::UserPlaces& user_;
    ambrel::Environment environment_;
    std::vector<std::string> opened_;
    DescriptorLimit limit_;
    BusLifetime lifetime_;
    EndRequest request_;
    ambrel::OwnedFd signals_;
    ambrel::OwnedFd nothing_; ///< what the standard streams become
    std::unique_ptr<PollLoop> loop_;
    std::optional<HelpedProcesses> processes_;
    HelperBus bus_; ///< behind what it is given when it serves
    std::optional<PollLoop::Timer> timer_;
    PollLoop::Watch signalWatch_;
    PollLoop::Watch channelWatch_;
};

} // namespace korvane::runner::bus
