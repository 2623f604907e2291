#include "korvane-runner/Bus/Linux/BusProxy.h"

#include "korvane-runner/Bus/Linux/ClientLink.h"
#include "korvane-runner/Bus/Linux/Entrance.h"
#include "korvane-runner/Bus/Linux/HeldMessages.h"

#include <array>
#include <map>
#include <new>
#include <set>

namespace korvane::runner::bus {

namespace {

using namespace ambrel;

} // namespace

/// What is behind the proxy.
class BusProxy::Core {
public:
    Core(PollLoop& loop, ServiceProcesses& services, Setup setup);

    void acceptWaiting() { entrance_.acceptWaiting(); }
    void serviceEnded(std::string_view name, int waitStatus) { held_.ended(name, waitStatus); }
    Counts counts() const;
    std::vector<Client> clientsOfServices() const;
    std::size_t load() const;

    std::function<void()> changed;

private:
    void addClient(OwnedFd socket, Entrance::Visitor visitor);
    void removeFinished();
    void free(std::uint64_t client, HeldMessage message, const ActivationError* error);
    void noteChange();
    std::vector<std::string> namesOf(const ClientLink& link) const;

    PollLoop& loop_;
    BusAddress address_;
    InstanceBus bus_;
    HeldMessages held_;
    std::array<char, 64 * 1024> room_; ///< filled by the system, mostly with little
    std::map<std::uint64_t, ClientLink> links_;
    std::set<std::uint64_t> ofServices_; ///< the numbers of those links
    std::uint64_t lastNumber_ = 0;
    PollLoop::Timer sweep_;
    PollLoop::Timer tell_;
    Entrance entrance_;
};

BusProxy::Core::Core(PollLoop& loop, ServiceProcesses& services, Setup setup)
    : loop_(loop), address_(std::move(setup.bus)), bus_{.names = std::move(setup.names)},
      held_({.loop = loop,
             .services = services,
             .bus = bus_,
             .folders = std::move(setup.folders),
             .limits = setup.limits,
             .free =
                 [this](std::uint64_t client, HeldMessage message, const ActivationError* error) {
                     free(client, std::move(message), error);
                 },
             .acquired = [this] { noteChange(); }}),
      sweep_(loop, [this] { removeFinished(); }), tell_(loop,
                                                        [this] {
                                                            if (changed) changed();
                                                        }),
      entrance_(
          loop,
          {.isOfService =
               [&services](std::int64_t process) { return services.isOfService(process); },
           .program = [this](OwnedFd socket,
                             Entrance::Visitor visitor) { addClient(std::move(socket), visitor); },
           .changed = [this] { noteChange(); }}) {
    entrance_.listenOn(std::move(setup.listening));
}

// From the loop, so that nothing is asked of a proxy that is in the middle of something.
void BusProxy::Core::noteChange() {
    if (!tell_.isSet()) tell_.set(PollLoop::Clock::now());
}

void BusProxy::Core::addClient(OwnedFd socket, Entrance::Visitor visitor) {
    held_.refreshServices();
    const auto number = ++lastNumber_;
    const LinkSurroundings surroundings{loop_, address_, bus_, held_, room_};
    const ClientLink::Client client{.number = number, .process = visitor.process};
    const auto made = links_.try_emplace(number, surroundings, client, std::move(socket), [this] {
        if (!sweep_.isSet()) sweep_.set(PollLoop::Clock::now());
    });
    try {
        if (visitor.isOfService) ofServices_.insert(number);
    } catch (const std::bad_alloc&) {
        links_.erase(made.first); // one that is counted wrongly would keep all or nothing
        held_.clientGone(number);
        throw;
    }
    noteChange();
}

void BusProxy::Core::removeFinished() {
    for (auto link = links_.begin(); link != links_.end();) {
        if (!link->second.isFinished()) {
            ++link;
            continue;
        }
        const auto number = link->first;
        link = links_.erase(link);
        ofServices_.erase(number);
        held_.clientGone(number);
    }
    noteChange();
}

void BusProxy::Core::free(std::uint64_t client, HeldMessage message, const ActivationError* error) {
    const auto link = links_.find(client);
    if (link == links_.end()) return;
    if (error != nullptr) {
        link->second.refuse(message, *error);
    } else {
        link->second.release(std::move(message));
    }
}

std::vector<std::string> BusProxy::Core::namesOf(const ClientLink& link) const {
    std::vector<std::string> names;
    for (const auto& name : bus_.owners.namesOf(link.uniqueName())) {
        if (auto known = bus_.names.fromBus(name, NameUse::own)) names.push_back(*std::move(known));
    }
    return names;
}

std::vector<BusProxy::Client> BusProxy::Core::clientsOfServices() const {
    std::vector<Client> clients;
    for (const auto number : ofServices_) {
        const auto found = links_.find(number);
        if (found == links_.end()) continue;
        const auto& link = found->second;
        clients.push_back({.process = link.client().process, .names = namesOf(link)});
    }
    return clients;
}

BusProxy::Counts BusProxy::Core::counts() const {
    const auto waiting = entrance_.counts();
    return {.programs = waiting.programs + links_.size() - ofServices_.size(),
            .ofServices = waiting.ofServices + ofServices_.size(),
            .leases = waiting.leases};
}

std::size_t BusProxy::Core::load() const {
    std::size_t load = 0;
    for (const auto& [number, link] : links_) load += link.load();
    return load;
}

BusProxy::BusProxy(PollLoop& loop, ServiceProcesses& services, Setup setup)
    : core_(std::make_unique<Core>(loop, services, std::move(setup))) {}

BusProxy::~BusProxy() = default;

void BusProxy::serviceEnded(std::string_view name, int waitStatus) {
    core_->serviceEnded(name, waitStatus);
}

std::vector<BusProxy::Client> BusProxy::clientsOfServices() const {
    return core_->clientsOfServices();
}

BusProxy::Counts BusProxy::counts() const { return core_->counts(); }

std::size_t BusProxy::load() const { return core_->load(); }

void BusProxy::acceptWaiting() { core_->acceptWaiting(); }

void BusProxy::onChange(std::function<void()> changed) { core_->changed = std::move(changed); }

} // namespace korvane::runner::bus
