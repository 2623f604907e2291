#include "korvane-runner/Bus/Linux/PollLoop.h"

#include "Ambrel/Platform/Posix/Retry.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <limits>
#include <new>
#include <sys/epoll.h>
#include <system_error>
#include <utility>

namespace korvane::runner::bus {

namespace {

epoll_event eventFor(PollLoop::Interest interest, std::uint64_t id) {
    epoll_event event{};
    if (interest.reading) event.events |= EPOLLIN;
    if (interest.writing) event.events |= EPOLLOUT;
    event.data.u64 = id;
    return event;
}

PollLoop::Event eventOf(std::uint32_t events) {
    return {.canRead = (events & (EPOLLIN | EPOLLHUP | EPOLLERR)) != 0};
}

/// What is no memory for is one program's; others, whose work is not saved, are served here too.
template <class Call> void callIfThereIsMemory(const Call& call) {
    try {
        call();
    } catch (const std::bad_alloc&) {
    }
}

} // namespace

PollLoop::PollLoop() : epoll_(::epoll_create1(EPOLL_CLOEXEC)) {
    if (!epoll_) throw std::system_error(errno, std::generic_category());
}

PollLoop::~PollLoop() = default;

PollLoop::Watch PollLoop::watch(int fd, Interest interest, Handler handler) {
    const auto id = ++lastId_;
    // What is watched and has nobody to be told would be told again and again.
    const auto source =
        sources_.emplace(id, Source{fd, std::make_shared<Handler>(std::move(handler))}).first;
    auto event = eventFor(interest, id);
    if (::epoll_ctl(epoll_.get(), EPOLL_CTL_ADD, fd, &event) == 0) return {this, fd, id, interest};
    sources_.erase(source);
    return {};
}

void PollLoop::forget(std::uint64_t id, int fd) noexcept {
    ::epoll_ctl(epoll_.get(), EPOLL_CTL_DEL, fd, nullptr);
    sources_.erase(id);
}

PollLoop::Watch::Watch(Watch&& other) noexcept
    : loop_(std::exchange(other.loop_, nullptr)), fd_(other.fd_), id_(other.id_),
      interest_(other.interest_) {}

PollLoop::Watch& PollLoop::Watch::operator=(Watch&& other) noexcept {
    Watch old(std::move(*this));
    loop_ = std::exchange(other.loop_, nullptr);
    fd_ = other.fd_;
    id_ = other.id_;
    interest_ = other.interest_;
    return *this;
}

PollLoop::Watch::~Watch() {
    if (loop_ != nullptr) loop_->forget(id_, fd_);
}

void PollLoop::Watch::setInterest(Interest interest) {
    if (loop_ == nullptr || interest == interest_) return;
    interest_ = interest;
    auto event = eventFor(interest, id_);
    ::epoll_ctl(loop_->epoll_.get(), EPOLL_CTL_MOD, fd_, &event);
}

PollLoop::Timer::Timer(PollLoop& loop, std::function<void()> handler)
    : loop_(loop), handler_(std::make_shared<std::function<void()>>(std::move(handler))) {
    Timers own;
    own.emplace(TimerKey{}, this);
    node_ = own.extract(own.begin());
}

void PollLoop::Timer::set(Time time) noexcept {
    clear();
    time_ = time;
    id_ = ++loop_.lastId_;
    node_.key() = {time_, id_};
    loop_.timers_.insert(std::move(node_));
}

void PollLoop::Timer::clear() noexcept {
    if (id_ == 0) return;
    node_ = loop_.timers_.extract({time_, id_});
    id_ = 0;
}

// Only those that were due when it began: one that sets itself again must not keep all others from
// being called.
void PollLoop::runTimers() {
    const auto now = Clock::now();
    const auto last = lastId_;
    while (true) {
        const auto due = std::ranges::find_if(
            timers_, [last](const auto& entry) { return entry.first.second <= last; });
        if (due == timers_.end() || due->first.first > now) return;
        const auto handler = due->second->handler_; // it may end its own timer
        due->second->clear();
        callIfThereIsMemory([&] { (*handler)(); });
    }
}

// Rounded up: a wait that ends early would be begun again and again.
int PollLoop::millisecondsToWait(std::optional<Clock::duration> limit) const {
    auto wait = limit;
    if (!timers_.empty()) {
        const auto left = timers_.begin()->first.first - Clock::now();
        if (!wait || left < *wait) wait = left;
    }
    if (!wait) return -1;
    using Rounded = std::chrono::duration<std::int64_t, std::milli>;
    constexpr std::int64_t longest = std::numeric_limits<int>::max();
    return static_cast<int>(
        std::clamp<std::int64_t>(std::chrono::ceil<Rounded>(*wait).count(), 0, longest));
}

bool PollLoop::runOnce(std::optional<Clock::duration> limit) {
    std::array<epoll_event, 64> events{};
    const auto count = ::epoll_wait(epoll_.get(), events.data(), static_cast<int>(events.size()),
                                    millisecondsToWait(limit));
    if (count < 0 && errno != EINTR) return false;
    for (int i = 0; i < count; ++i) {
        const auto& event = events[static_cast<std::size_t>(i)];
        const auto source = sources_.find(event.data.u64);
        if (source == sources_.end()) continue; // one before has ended it
        const auto handler = source->second.handler;
        callIfThereIsMemory([&] { (*handler)(eventOf(event.events)); });
    }
    runTimers();
    return true;
}

void PollLoop::run() {
    isStopped_ = false;
    while (!isStopped_ && runOnce()) {
    }
}

} // namespace korvane::runner::bus
