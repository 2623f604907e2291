#pragma once

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <type_traits>
#include <vector>

namespace ambrel {

/// Works that do not need each other, done on as many threads as the machine has cores, the calling
/// one among them. What they give is taken on the calling thread, one after another in order, as if
/// they had been done one after another.
template <class Work, class Take> class SideBySide {
public:
    using Result = std::invoke_result_t<Work, std::size_t>;

    SideBySide(std::size_t count, const Work& work, const Take& take)
        : slots_(count), work_(work), take_(take) {}
    SideBySide(const SideBySide&) = delete;
    SideBySide& operator=(const SideBySide&) = delete;
    ~SideBySide() = default;

    void run() {
        Helpers helpers;
        const StopAtEnd stop(next_, slots_.size());
        helpers.start(helpersWanted(), [this] {
            while (workOnNext()) {
            }
        });
        for (auto& slot : slots_) {
            while (!slot.isDone.load() && workOnNext()) {
            }
            awaitEnd(slot);
            if (slot.error) std::rethrow_exception(slot.error);
            take_(std::move(*slot.result));
        }
    }

private:
    struct Slot {
        std::optional<Result> result;
        std::exception_ptr error;
        std::atomic<bool> isDone = false;
    };
    /// Joined at the end, however that comes.
    struct Helpers {
        Helpers() = default;
        Helpers(const Helpers&) = delete;
        Helpers& operator=(const Helpers&) = delete;
        ~Helpers() {
            for (auto& thread : threads) thread.join();
        }

        /// Fewer where the system gives no more: the calling thread does what is left.
        template <class Body> void start(std::size_t count, const Body& body) {
            try {
                while (threads.size() < count) threads.emplace_back(body);
            } catch (const std::system_error&) {
                return;
            }
        }

        std::vector<std::thread> threads;
    };
    /// After a failure nothing more is begun.
    struct StopAtEnd {
        StopAtEnd(std::atomic<std::size_t>& next, std::size_t count) : next_(next), end_(count) {}
        StopAtEnd(const StopAtEnd&) = delete;
        StopAtEnd& operator=(const StopAtEnd&) = delete;
        ~StopAtEnd() { next_.store(end_); }

    private:
        std::atomic<std::size_t>& next_;
        std::size_t end_;
    };

    /// Beside the calling thread; none where there is nothing to do.
    std::size_t helpersWanted() const { return std::max<std::size_t>(threads(), 1) - 1; }

    std::size_t threads() const {
        // Each may hold a few descriptors, of which a process has a thousand.
        constexpr std::size_t most = 64;
        const std::size_t cores = std::max(1U, std::thread::hardware_concurrency());
        return std::min({cores, slots_.size(), most});
    }

    /// False when there is nothing left to begin.
    bool workOnNext() {
        const auto index = next_.fetch_add(1);
        if (index >= slots_.size()) return false;
        auto& slot = slots_[index];
        try {
            slot.result.emplace(work_(index));
        } catch (...) {
            slot.error = std::current_exception();
        }
        {
            const std::lock_guard lock(mutex_);
            slot.isDone.store(true);
        }
        ended_.notify_one();
        return true;
    }

    void awaitEnd(const Slot& slot) {
        std::unique_lock lock(mutex_);
        ended_.wait(lock, [&slot] { return slot.isDone.load(); });
    }

    std::vector<Slot> slots_;
    std::atomic<std::size_t> next_ = 0;
    std::mutex mutex_;
    std::condition_variable ended_; ///< of some work
    const Work& work_;
    const Take& take_;
};

/// Calls `work` with each number below `count`, and `take` with what it gives, in that order. The
/// first that throws, of these calls in order, ends it; what has begun by then comes to its end.
template <class Work, class Take>
void sideBySide(std::size_t count, const Work& work, const Take& take) {
    SideBySide<Work, Take>(count, work, take).run();
}

} // namespace ambrel
