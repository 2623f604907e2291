#include "korvane-runner/Bus/Linux/BusHelper.h"

#include "Ambrel/Instance/OwnNames.h"
#include "Ambrel/Launch/InstanceLauncher.h"
#include "Ambrel/Platform/FileError.h"
#include "Ambrel/Platform/Posix/Retry.h"
#include "Ambrel/Platform/Posix/WaitStatus.h"
#include "Ambrel/Platform/PropertyList.h"
#include "korvane-runner/Bus/Linux/HelpedProgram.h"
#include "korvane-runner/Bus/Linux/HelperSurroundings.h"
#include "korvane-runner/Bus/Linux/ProgramPages.h"

#include <array>
#include <csignal>
#include <fcntl.h>
#include <new>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <unistd.h>

namespace korvane::runner::bus {

using namespace ambrel;
using Kind = HelperMessage::Kind;
using Clock = BusLifetime::Time::clock;

BusHelper::BusHelper(Setup setup)
    : runner_(std::move(setup.channel), setup.runner), instance_(setup.instance), user_(setup.user),
      environment_(std::move(setup.environment)), opened_(std::move(setup.opened)),
      bus_({.place = std::move(setup.place),
            .claim = std::move(setup.claim),
            .bus = std::move(setup.bus),
            .prefix = std::move(setup.prefix),
            .config = setup.instance.config,
            .userData = setup.user.data}) {}
BusHelper::~BusHelper() = default;

// A program that was launched has a bus then: whatever can fail is done before.
void BusHelper::run() noexcept {
    if (!prepare() || !launch()) {
        bus_.remove();
        return;
    }
    HelperSurroundings::leave(nothing_);
    look();
    // This process stays, and has done already most of what the runner can do.
    forgetPropertyLists();
    forgetProgramPages();
    runLoop();
}

/// Until nobody needs it: programs would end with it. Whatever there is no memory for is not done,
/// and memory becomes free again.
void BusHelper::runLoop() noexcept {
    while (true) {
        try {
            return loop_->run();
        } catch (const std::exception&) {
            continue;
        }
    }
}

bool BusHelper::prepare() noexcept {
    try {
        separate();
    } catch (const std::exception& error) {
        runner_.refuse(Kind::declined, error);
        return false;
    }
    try {
        prepareProgram();
    } catch (const std::bad_alloc& error) {
        runner_.refuse(Kind::declined, error);
        return false;
    } catch (const std::exception& error) {
        runner_.refuse(Kind::failed, error); // as it does without names of its own
        return false;
    }
    try {
        bus_.serve(*loop_, processes_->services(), [this] { peopleChanged(); });
        return true;
    } catch (const std::exception& error) {
        runner_.refuse(Kind::declined, error);
        return false;
    }
}

/// From whoever started the runner, as far as this process's own work is concerned.
void BusHelper::separate() {
    HelperSurroundings::blockSignals();
    auto kept = bus_.descriptors();
    kept.push_back(runner_.descriptor());
    HelperSurroundings::closeAllBut(std::move(kept));
    ::prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0);
    limit_.raise();
    signals_ = HelperSurroundings::openSignals();
    loop_ = std::make_unique<PollLoop>();
    signalWatch_ = loop_->watch(signals_.get(), {.reading = true}, [this](auto) {
        takeSignals();
        look();
    });
    channelWatch_ = loop_->watch(runner_.descriptor(), {.reading = true}, [this](auto) { hear(); });
    timer_.emplace(*loop_, [this] { look(); });
    if (!signalWatch_ || !channelWatch_) throwFileError("watch", "the program");
    nothing_ = OwnedFd::open("open", "/dev/null", O_RDWR);
    HelperSurroundings::requireRoom(nothing_);
}

void BusHelper::prepareProgram() {
    auto environment = environment_;
    environment[busAddressVariable] = bus_.address();
    environment.erase("DBUS_STARTER_ADDRESS");
    environment.erase("DBUS_STARTER_BUS_TYPE");
    auto program = InstanceLauncher::prepare(instance_, user_, environment, {}, opened_);
    processes_.emplace(HelpedProcesses::Setup{.program = std::move(program),
                                              .target = instance_.config.targetAppURL(),
                                              .userData = user_.data,
                                              .address = bus_.address()},
                       limit_);
}

bool BusHelper::launch() noexcept {
    try {
        processes_->launch();
    } catch (const std::bad_alloc& error) {
        runner_.refuse(Kind::declined, error);
        return false;
    } catch (const std::exception& error) {
        runner_.refuse(Kind::failed, error);
        return false;
    }
    HelperMessage started{.kind = Kind::started, .number = processes_->program()};
    for (int signal = 1; signal < NSIG; ++signal) {
        if (processes_->missed(signal)) started.signals |= signalBit(signal);
    }
    runner_.tell(started);
    return true;
}

// Not at once: whoever says so may be in the middle of something.
void BusHelper::peopleChanged() {
    if (!processes_->programRuns()) timer_->set(Clock::now());
    processes_->noteApplications(bus_.clientsOfServices());
}

void BusHelper::look() {
    try {
        lookAndStep();
    } catch (const std::exception&) {
        // No memory for a list. The runner may have to be told of an end that nobody else tells.
        constexpr std::chrono::seconds pause(1);
        timer_->setAfter(pause);
    }
}

void BusHelper::lookAndStep() {
    reapAll();
    const auto step = lifetime_.step(present(), Clock::now());
    if (step == BusLifetime::Step::end && bus_.tryEnd()) {
        runner_.tellEnd(Kind::allEnded);
        loop_->stop();
        return;
    }
    runner_.tellEnd(Kind::ended);
    if (step == BusLifetime::Step::endServices) processes_->askServicesToEnd();
    if (const auto next = lifetime_.next()) timer_->set(*next);
}

void BusHelper::reapAll() {
    while (const auto ended = processes_->reapNext()) {
        if (ended->service && ended->service->isLatest) {
            bus_.serviceEnded(ended->service->name, ended->status);
        }
        if (!ended->isProgram) continue;
        runner_.noteEnd(terminationStatusOf(ended->status));
        programEnded();
    }
}

void BusHelper::programEnded() {
    const auto service = runner_.hasEndedWell() ? processes_->continueAsService() : std::nullopt;
    if (service) return runner_.noteMoved(*service);
    if (request_.meansLeftBehind(Clock::now())) processes_->askLeftToEnd();
}

BusLifetime::Present BusHelper::present() {
    BusLifetime::Present present{.program = processes_->programRuns()};
    if (present.program) return present;
    const auto counts = bus_.counts();
    present.leases = counts.leases;
    present.clients = counts.programs;
    present.applications = processes_->applications(bus_.clientsOfServices()).size();
    present.services = processes_->services().count();
    if (present.anybody() || !hasChildren()) return present;
    const auto left = processes_->left();
    present.orphans = left.programs.size();
    present.services += left.services.size();
    // There is one that cannot be looked at: another user's, or there are no descriptors for it.
    if (left.areUnseen) present.orphans = 1;
    return present;
}

void BusHelper::hear() {
    look(); // what is sent to the program may be meant for another process by now
    runner_.hear([this](int signal) { processes_->sendToProgram(signal); });
    if (!runner_.isThere()) channelWatch_ = {};
}

void BusHelper::takeSignals() {
    std::array<signalfd_siginfo, 4> arrived{};
    while (true) {
        const auto size = retryInterrupted(
            [&] { return ::read(signals_.get(), arrived.data(), sizeof arrived); });
        if (size <= 0) return;
        const auto count = static_cast<std::size_t>(size) / sizeof arrived[0];
        for (std::size_t i = 0; i < count; ++i) {
            if (arrived.at(i).ssi_signo == SIGTERM) requestEnd();
        }
    }
}

/// Somebody wants all of the instance to end. The runner asks the program itself, where it can.
void BusHelper::requestEnd() {
    lifetime_.hurry();
    request_.come(Clock::now());
    if (!runner_.isThere()) processes_->sendToProgram(SIGTERM);
    processes_->askLeftToEnd();
    processes_->askApplicationsToEnd(bus_.clientsOfServices());
}

} // namespace korvane::runner::bus
