#pragma once

#include "Ambrel/Platform/OwnedFd.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace korvane::runner::bus {

/// Waits for descriptors and for times, and calls who asked for them: one after another, on the
/// thread that runs it. Whatever is called may begin and end to watch anything, itself included.
/// Where it finds no memory for what it is called for, that is lost, and the others are called.
class PollLoop {
public:
    using Clock = std::chrono::steady_clock;
    using Time = Clock::time_point;

    /// What a descriptor is watched for. That its other side has gone is always told.
    struct Interest {
        bool reading = false;
        bool writing = false;
        bool operator==(const Interest&) const = default;
    };
    /// What has happened to it. It can be written to where nothing else is told.
    struct Event {
        bool canRead = false; ///< also where there is an error or the other side has gone: that
                              ///< tells it
    };
    using Handler = std::function<void(Event)>;

    /// Throws std::system_error.
    PollLoop();
    PollLoop(const PollLoop&) = delete;
    PollLoop& operator=(const PollLoop&) = delete;
    ~PollLoop();

    /// Until it goes a descriptor is watched. The loop has to outlive it, and it the descriptor.
    class Watch {
    public:
        Watch() = default;
        Watch(Watch&& other) noexcept;
        Watch& operator=(Watch&& other) noexcept;
        ~Watch();

        void setInterest(Interest interest);
        explicit operator bool() const { return loop_ != nullptr; }

    private:
        friend class PollLoop;
        Watch(PollLoop* loop, int fd, std::uint64_t id, Interest interest)
            : loop_(loop), fd_(fd), id_(id), interest_(interest) {}

        PollLoop* loop_ = nullptr;
        int fd_ = -1;
        std::uint64_t id_ = 0;
        Interest interest_{};
    };

    /// An empty one where the system has no room for another. Throws std::bad_alloc, and nothing is
    /// watched then.
    [[nodiscard]] Watch watch(int fd, Interest interest, Handler handler);

    class Timer;

private:
    using TimerKey = std::pair<Time, std::uint64_t>;
    using Timers = std::map<TimerKey, Timer*>;

public:
    /// Calls something at a time. The loop has to outlive it. To be set takes no memory: it may be
    /// what tries again when there was none.
    class Timer {
    public:
        Timer(PollLoop& loop, std::function<void()> handler);
        Timer(const Timer&) = delete;
        Timer& operator=(const Timer&) = delete;
        ~Timer() { clear(); }

        /// Once, at `time`; instead of another that was set before.
        void set(Time time) noexcept;
        void setAfter(Clock::duration duration) noexcept { set(Clock::now() + duration); }
        void clear() noexcept;
        bool isSet() const { return id_ != 0; }

    private:
        friend class PollLoop;
        PollLoop& loop_;
        std::shared_ptr<std::function<void()>> handler_;
        Time time_{};
        std::uint64_t id_ = 0;
        Timers::node_type node_; ///< its place among the loop's, while it is not set
    };

    /// Waits until something happens, at most as long as `limit`, and calls everybody that it
    /// concerns. False where it cannot wait at all any more.
    bool runOnce(std::optional<Clock::duration> limit = {});
    /// Until stop() is called, or nothing can be waited for any more.
    void run();
    void stop() { isStopped_ = true; }

private:
    struct Source {
        int fd;
        std::shared_ptr<Handler> handler;
    };

    int millisecondsToWait(std::optional<Clock::duration> limit) const;
    void runTimers();
    void forget(std::uint64_t id, int fd) noexcept;

    ambrel::OwnedFd epoll_;
    std::map<std::uint64_t, Source> sources_;
    Timers timers_;
    std::uint64_t lastId_ = 0;
    bool isStopped_ = false;
};

} // namespace korvane::runner::bus
