#include "korvane-runner/Bus/Linux/HeldMessages.h"

#include <new>
#include <sys/wait.h>
#include <utility>

namespace korvane::runner::bus {

namespace {

/// More must not wait: this process could open nothing any more.
constexpr std::size_t mostHeldDescriptors = 1024;

} // namespace

HeldMessages::HeldMessages(Setup setup)
    : setup_(std::move(setup)), activation_(setup_.limits),
      timer_(setup_.loop, [this] { onTime(); }) {}

void HeldMessages::readServices() {
    table_ = setup_.folders.read();
    const auto names = table_.names();
    setup_.bus.activatable = {names.begin(), names.end()};
}

void HeldMessages::refreshServices() {
    if (setup_.folders.haveChanged()) readServices();
}

bool HeldMessages::hold(std::uint64_t client, const std::string& service, HeldMessage message) {
    const auto descriptors = message.descriptors.size();
    if (descriptors > mostHeldDescriptors - descriptors_) return false;
    const auto ticket = ++lastTicket_;
    const auto size = message.head.size() + message.bytes.size();
    if (!hasRoomFor(size)) return false;
    const auto kept = messages_.emplace(ticket, std::move(message)).first;
    auto held = Activation::Hold::full;
    try {
        held = activation_.hold(service, {client, ticket, size}, PollLoop::Clock::now());
    } catch (const std::bad_alloc&) {
        messages_.erase(kept);
        throw;
    }
    if (held == Activation::Hold::full) {
        messages_.erase(kept);
        return false;
    }
    descriptors_ += descriptors;
    if (held == Activation::Hold::start) start(service);
    setTimer();
    return true;
}

bool HeldMessages::hasRoomFor(std::size_t bytes) const {
    const auto taken = activation_.bytes() + reserved_;
    return taken <= setup_.limits.bytes && bytes <= setup_.limits.bytes - taken;
}

bool HeldMessages::reserve(std::size_t bytes) {
    if (!hasRoomFor(bytes)) return false;
    reserved_ += bytes;
    return true;
}

void HeldMessages::start(const std::string& service) {
    const auto* file = table_.find(service);
    try {
        const auto reason = file != nullptr
                                ? setup_.services.start(*file, setup_.bus.environment)
                                : std::optional<std::string>("No such file or directory");
        if (reason) free(activation_.notStarted(service, *reason));
    } catch (const std::bad_alloc&) {
        // There is not even memory for a reason: the bus tells whoever waits that nobody is there.
        free(activation_.acquired(service));
    }
}

void HeldMessages::free(Activation::Release release) {
    const auto* error = release.error ? &*release.error : nullptr;
    for (const auto& waiting : release.messages) {
        auto node = messages_.extract(waiting.ticket);
        if (node.empty()) continue;
        descriptors_ -= node.mapped().descriptors.size();
        setup_.free(waiting.client, std::move(node.mapped()), error);
    }
    setTimer();
}

void HeldMessages::acquired(const std::string& name) {
    free(activation_.acquired(name));
    setup_.acquired();
}

void HeldMessages::ended(std::string_view service, int waitStatus) {
    const auto end = activation_.ended(service);
    if (end == Activation::End::startsAnother) start(std::string(service));
    if (end != Activation::End::unasked) return;
    if (WIFSIGNALED(waitStatus)) return free(activation_.signaled(service, WTERMSIG(waitStatus)));
    free(activation_.exited(service, WEXITSTATUS(waitStatus)));
}

void HeldMessages::clientGone(std::uint64_t client) {
    for (const auto& waiting : activation_.clientGone(client)) {
        const auto node = messages_.extract(waiting.ticket);
        if (!node.empty()) descriptors_ -= node.mapped().descriptors.size();
    }
}

void HeldMessages::onTime() {
    while (true) {
        auto release = activation_.expired(PollLoop::Clock::now());
        if (!release.error) break;
        // A second one beside it would find its files in use; and it may be all that is wrong.
        if (setup_.services.askToEnd(release.service)) activation_.askedToEnd(release.service);
        free(std::move(release));
    }
    setTimer();
}

void HeldMessages::setTimer() {
    const auto next = activation_.nextExpiry();
    if (next) {
        timer_.set(*next);
    } else {
        timer_.clear();
    }
}

} // namespace korvane::runner::bus
