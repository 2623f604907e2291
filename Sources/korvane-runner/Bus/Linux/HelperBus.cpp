#include "korvane-runner/Bus/Linux/HelperBus.h"

#include "Ambrel/Base/TextParts.h"
#include "Ambrel/Platform/FileError.h"
#include "korvane-runner/Bus/ConfiguredNames.h"

namespace korvane::runner::bus {

using namespace ambrel;

std::string HelperBus::address() const {
    return BusAddress{BusAddress::Kind::file, setup_.place.socketPath()}.text();
}

std::vector<int> HelperBus::descriptors() const {
    if (const auto* lease = std::get_if<SocketLease>(&setup_.claim)) {
        return {lease->connection.get()};
    }
    const auto& served = std::get<ServedSocket>(setup_.claim);
    return {served.listening(), served.lock()};
}

void HelperBus::serve(PollLoop& loop, StartedServices& services, std::function<void()> changed) {
    loop_ = &loop;
    services_ = &services;
    changed_ = std::move(changed);
    again_.emplace(loop, [this] { takeOver(); });
    begin();
}

void HelperBus::begin() {
    const auto* lease = std::get_if<SocketLease>(&setup_.claim);
    if (lease == nullptr) return makeProxy();
    leaseWatch_ =
        loop_->watch(lease->connection.get(), {.reading = true}, [this](auto) { takeOver(); });
    if (!leaseWatch_) throwFileError("watch", setup_.place.socketPath());
}

void HelperBus::makeProxy() {
    const auto& environment = services_->environment();
    ServicePlaces places{.runtimeFolder = valueOf(environment, "XDG_RUNTIME_DIR"),
                         .instanceData = valueOf(environment, "XDG_DATA_HOME"),
                         .userData = setup_.userData,
                         .dataFolders = valueOf(environment, "XDG_DATA_DIRS")};
    proxy_ = std::make_unique<BusProxy>(
        *loop_, *services_,
        BusProxy::Setup{
            .listening = std::get<ServedSocket>(setup_.claim).takeListening(),
            .bus = setup_.bus,
            .names = InstanceNames(PrivateNames(setup_.prefix), configuredPolicy(setup_.config)),
            .folders = ServiceFolders(places)});
    proxy_->onChange(changed_);
}

/// The process that had the bus would not have ended by itself. Programs of this start that connect
/// from now on find one again; another start may be first, which has it then.
void HelperBus::takeOver() {
    constexpr ClaimLimits atOnce{.answer = std::chrono::milliseconds(100),
                                 .all = std::chrono::milliseconds(0)};
    constexpr std::chrono::seconds pause(1);
    leaseWatch_ = {};
    try {
        setup_.claim = claimSocket(setup_.place, atOnce);
        begin();
        changed_();
    } catch (const std::exception&) {
        setup_.claim = SocketLease(); // who looks for the bus in vain tries what is done here
        again_->setAfter(pause);
    }
}

void HelperBus::serviceEnded(std::string_view name, int waitStatus) {
    if (proxy_) proxy_->serviceEnded(name, waitStatus);
}

BusProxy::Counts HelperBus::counts() const {
    return proxy_ ? proxy_->counts() : BusProxy::Counts();
}

std::vector<BusProxy::Client> HelperBus::clientsOfServices() const {
    return proxy_ ? proxy_->clientsOfServices() : std::vector<BusProxy::Client>();
}

bool HelperBus::tryEnd() {
    const auto* served = std::get_if<ServedSocket>(&setup_.claim);
    if (served == nullptr || !proxy_) return true;
    const HiddenSocket hidden(*served);
    proxy_->acceptWaiting();
    if (proxy_->counts().isAnybodyThere()) return false;
    served->remove();
    return true;
}

void HelperBus::remove() const noexcept {
    if (const auto* served = std::get_if<ServedSocket>(&setup_.claim)) served->remove();
}

} // namespace korvane::runner::bus
