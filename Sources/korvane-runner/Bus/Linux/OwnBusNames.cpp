#include "korvane-runner/Bus/OwnBusNames.h"

#include "Ambrel/Application/AdoptedProgram.h"
#include "Ambrel/Base/TextParts.h"
#include "Ambrel/Instance/OwnNames.h"
#include "Ambrel/Platform/FileError.h"
#include "Ambrel/Platform/Posix/Retry.h"
#include "korvane-runner/Bus/ConfiguredNames.h"
#include "korvane-runner/Bus/Linux/BusHelper.h"
#include "korvane-runner/Bus/Linux/HelpedProgram.h"
#include "korvane-runner/Bus/Linux/ProcessFamily.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <new>
#include <stdexcept>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace korvane::runner {

namespace {

using namespace ambrel;
using namespace bus;
using Kind = HelperMessage::Kind;

/// Of any user: a bus that was told may be another's.
bool hasSocket(const Path& path) {
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && S_ISSOCK(status.st_mode);
}

/// Absent without a bus, or with an address from when there was one. Throws std::runtime_error for
/// an address that nobody here can connect to.
std::optional<BusAddress> findBus(const Environment& environment) {
    const auto address = valueOf(environment, busAddressVariable);
    auto found = BusAddress::ofSession(address, valueOf(environment, "XDG_RUNTIME_DIR"));
    if (!found && !address.empty()) {
        throw std::runtime_error("the bus has an address of a kind that is not known: " + address);
    }
    // Without an address it was found by its socket.
    const bool isToldFile = found && !address.empty() && found->kind == BusAddress::Kind::file;
    if (isToldFile && !hasSocket(found->name)) return std::nullopt;
    return found;
}

[[noreturn]] void helpAndExit(BusHelper::Setup setup) noexcept {
    BusHelper(std::move(setup)).run();
    ::_exit(0); // what this process would do at its end is the runner's to do
}

/// The process beside this one, and what was so before it.
struct Helper {
    HelperChannel channel;
    pid_t process;
    std::uint64_t waiting;   ///< signals that had come before
    Subreaping subreaping;   ///< were it killed, the program would be this process's
    std::vector<int> before; ///< children that whoever became this program has left to it

    /// What it tells first. One that has started nothing has ended then.
    HelperMessage first() {
        auto message = channel.receive(HelperChannel::Wait::yes);
        if (message && message->kind == Kind::started) return std::move(*message);
        retryInterrupted([this] { return ::waitpid(process, nullptr, 0); });
        if (message) return std::move(*message);
        // It was killed. What it had started by then has been left to this process.
        auto left = childrenOfThisProcess();
        std::erase_if(left, [this](int child) { return std::ranges::count(before, child) > 0; });
        if (left.size() == 1) return {.kind = Kind::started, .number = left.front()};
        return {.kind = Kind::declined,
                .text = "the process beside the program ended before it had started it"};
    }
};

/// Mostly none, which is asked in no time.
std::vector<int> childrenFromBefore() {
    return hasChildren() ? childrenOfThisProcess() : std::vector<int>();
}

/// Throws FileError where there can be no helper; nothing runs then.
Helper fork(const ResolvedInstance& instance, const UserPlaces& user, const Environment& inherited,
            const std::vector<std::string>& opened, const BusAddress& bus) {
    const auto prefix = privatePrefix(instance.config.bundleId);
    const auto place = SocketPlace::of(prefix, bus, inherited);
    auto [ours, helpers] = HelperChannel::makePair();
    auto claim = claimSocket(place);
    auto before = childrenFromBefore();
    Subreaping subreaping;
    const int self = ::getpid();
    const auto waiting = waitingSignals();
    const pid_t process = ::fork();
    if (process == 0) {
        helpAndExit({.instance = instance,
                     .user = user,
                     .environment = inherited,
                     .opened = opened,
                     .bus = bus,
                     .prefix = prefix,
                     .claim = std::move(claim),
                     .place = place,
                     .channel = std::move(helpers),
                     .runner = self});
    }
    if (process < 0) {
        const int error = errno;
        if (const auto* served = std::get_if<ServedSocket>(&claim)) served->remove();
        throw FileError("start", "a process beside the program", error);
    }
    return {std::move(ours), process, waiting, std::move(subreaping), std::move(before)};
}

/// Whether a start without names of its own is worth a word.
enum class Telling { quietly, aloud };

/// What the bus starts would have the user's home. Who made the instance was refused to have it so,
/// but the bus may be another now, or none.
void requireNoStartByBus(const InstanceConfig& config, const std::string& reason) {
    if (config.kind != ShortcutKind::app || !isStartedByBus(config.targetAppURL())) return;
    throw std::runtime_error("the session bus starts this application, and it would open with your "
                             "own home without names of its own on the bus: " +
                             reason);
}

} // namespace

// Names of an instance's own within another's would be that one's, and end with it.
void OwnBusNames::returnToUsersBus() noexcept {
    const char* told = std::getenv(busAddressVariable);
    if (told == nullptr) return;
    try {
        const auto bus = BusAddress::parse(told, {});
        const auto behind = bus ? busBehind(*bus) : std::nullopt;
        if (!behind) return;
        ::setenv(busAddressVariable, behind->text().c_str(), 1);
        ::unsetenv("DBUS_STARTER_ADDRESS");
        ::unsetenv("DBUS_STARTER_BUS_TYPE");
    } catch (const std::bad_alloc&) {
        // Everything after this would fail as well, and tells.
    }
}

std::unique_ptr<HostedProgram>
OwnBusNames::tryLaunch(const ResolvedInstance& instance, const UserPlaces& user,
                       const Environment& inherited, const std::vector<std::string>& opened,
                       const std::function<void(const std::string&)>& tell) {
    const auto without = [&](const std::string& reason, Telling telling) {
        requireNoStartByBus(instance.config, reason);
        if (telling == Telling::aloud) tell("no names of its own on the bus — " + reason);
        return std::unique_ptr<HostedProgram>();
    };
    if (!wantsOwnNames(instance.config)) {
        return without("the instance shares the user's", Telling::quietly);
    }
    std::optional<Helper> helper;
    try {
        if (const auto bus = findBus(inherited)) {
            helper.emplace(fork(instance, user, inherited, opened, *bus));
        }
    } catch (const std::exception& error) {
        return without(error.what(), Telling::aloud);
    }
    if (!helper) return without("there is no bus", Telling::quietly);
    const auto first = helper->first();
    if (first.kind == Kind::failed) throw std::runtime_error(first.text);
    if (first.kind == Kind::declined) {
        helper.reset(); // this process is what it was before
        return without(first.text, Telling::aloud);
    }
    return std::make_unique<HelpedProgram>(std::move(helper->channel), helper->process, first,
                                           helper->waiting, std::move(helper->subreaping));
}

} // namespace korvane::runner
