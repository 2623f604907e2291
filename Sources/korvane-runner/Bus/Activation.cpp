#include "korvane-runner/Bus/Activation.h"

#include <algorithm>
#include <new>

namespace korvane::runner::bus {

ActivationError ActivationError::notStarted(std::string_view service, std::string_view reason) {
    return {"Spawn.ExecFailed",
            "Failed to execute program " + std::string(service) + ": " + std::string(reason)};
}

ActivationError ActivationError::timedOut(std::string_view service,
                                          std::chrono::milliseconds limit) {
    return {"TimedOut", "Failed to activate service '" + std::string(service) +
                            "': timed out (service_start_timeout=" + std::to_string(limit.count()) +
                            "ms)"};
}

ActivationError ActivationError::full(std::string_view service) {
    return {"LimitsExceeded", "Too many messages wait for services to start, " +
                                  std::string(service) + " among them"};
}

Activation::Hold Activation::hold(const std::string& service, WaitingMessage message, Time now) {
    if (messages_ >= limits_.messages || message.size > limits_.bytes - bytes_) return Hold::full;
    const auto [start, isNew] = starts_.try_emplace(service, Start{now + limits_.time});
    try {
        start->second.messages.push_back(message);
    } catch (const std::bad_alloc&) {
        if (isNew) starts_.erase(start); // else others would wait for what nobody starts
        throw;
    }
    ++messages_;
    bytes_ += message.size;
    return isNew && !asked_.contains(service) ? Hold::start : Hold::wait;
}

Activation::Release Activation::release(Starts::iterator start,
                                        std::optional<ActivationError> error) {
    auto ended = starts_.extract(start); // nothing is copied: there may be no memory
    Release result{std::move(ended.mapped().messages), std::move(error), std::move(ended.key())};
    messages_ -= result.messages.size();
    for (const auto& message : result.messages) bytes_ -= message.size;
    return result;
}

Activation::Release Activation::acquired(std::string_view service) {
    if (const auto asked = asked_.find(service); asked != asked_.end()) asked_.erase(asked);
    const auto start = starts_.find(service);
    return start == starts_.end() ? Release{} : release(start, std::nullopt);
}

Activation::Release Activation::notStarted(std::string_view service, std::string_view reason) {
    const auto start = starts_.find(service);
    if (start == starts_.end()) return {};
    return release(start, ActivationError::notStarted(service, reason));
}

Activation::Release Activation::fail(std::string_view service, std::string_view name,
                                     const std::string& text) {
    const auto start = starts_.find(service);
    if (start == starts_.end()) return {};
    return release(
        start, ActivationError{std::string(name), "Process " + std::string(service) + " " + text});
}

Activation::Release Activation::exited(std::string_view service, int status) {
    if (status == 0) return {};
    return fail(service, "Spawn.ChildExited", "exited with status " + std::to_string(status));
}

Activation::Release Activation::signaled(std::string_view service, int signal) {
    return fail(service, "Spawn.ChildSignaled", "received signal " + std::to_string(signal));
}

std::optional<Activation::Time> Activation::nextExpiry() const {
    std::optional<Time> next;
    for (const auto& [service, start] : starts_) {
        if (!next || start.expiry < *next) next = start.expiry;
    }
    return next;
}

Activation::Release Activation::expired(Time now) {
    const auto start = std::ranges::find_if(
        starts_, [now](const auto& entry) { return entry.second.expiry <= now; });
    if (start == starts_.end()) return {};
    return release(start, ActivationError::timedOut(start->first, limits_.time));
}

Activation::End Activation::ended(std::string_view service) {
    const auto asked = asked_.find(service);
    if (asked == asked_.end()) return End::unasked;
    asked_.erase(asked);
    const auto start = starts_.find(service);
    if (start == starts_.end()) return End::nothingWaits;
    if (!start->second.messages.empty()) return End::startsAnother;
    starts_.erase(start);
    return End::nothingWaits;
}

// The service is started nevertheless: it may be known already, and others may wait for it.
std::vector<WaitingMessage> Activation::clientGone(std::uint64_t client) {
    std::vector<WaitingMessage> gone;
    for (auto& [service, start] : starts_) {
        std::erase_if(start.messages, [&](const WaitingMessage& message) {
            if (message.client != client) return false;
            gone.push_back(message);
            return true;
        });
    }
    messages_ -= gone.size();
    for (const auto& message : gone) bytes_ -= message.size;
    return gone;
}

} // namespace korvane::runner::bus
