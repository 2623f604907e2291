#include "korvane-runner/Bus/Linux/PollLoop.h"

#include "Allocations.h"

#include <array>
#include <doctest/doctest.h>
#include <fcntl.h>
#include <new>
#include <optional>
#include <string>
#include <unistd.h>
#include <utility>

namespace korvane::test {

using namespace korvane::runner::bus;
using namespace std::chrono_literals;

namespace {

/// A pipe that can be read at once.
struct ReadyPipe {
    ReadyPipe() {
        std::array<int, 2> ends{};
        REQUIRE(::pipe2(ends.data(), O_CLOEXEC) == 0);
        read = ambrel::OwnedFd(ends[0]);
        write = ambrel::OwnedFd(ends[1]);
        REQUIRE(::write(write.get(), "x", 1) == 1);
    }

    ambrel::OwnedFd read;
    ambrel::OwnedFd write;
};

} // namespace

TEST_CASE("a descriptor is told of for as long as it is watched") {
    const ReadyPipe pipe;
    PollLoop loop;
    int told = 0;
    auto watch = loop.watch(pipe.read.get(), {.reading = true}, [&](PollLoop::Event event) {
        CHECK(event.canRead);
        ++told;
    });
    REQUIRE(watch);

    loop.runOnce();
    CHECK(told == 1);
    watch.setInterest({});
    loop.runOnce(0ms);
    CHECK(told == 1);
    watch.setInterest({.reading = true});
    loop.runOnce();
    CHECK(told == 2);
    watch = {};
    loop.runOnce(0ms);
    CHECK(told == 2);
}

TEST_CASE("whoever is told may end any watch") {
    const ReadyPipe first;
    const ReadyPipe second;
    PollLoop loop;
    PollLoop::Watch one;
    PollLoop::Watch other;
    int told = 0;
    const auto endAll = [&, text = std::string(100, 'x')](PollLoop::Event) {
        one = {};
        other = {};
        ++told;
        CHECK(text.size() == 100);
    };
    one = loop.watch(first.read.get(), {.reading = true}, endAll);
    other = loop.watch(second.read.get(), {.reading = true}, endAll);

    loop.runOnce();
    loop.runOnce(0ms);

    CHECK(told == 1);
}

TEST_CASE("a watch that goes elsewhere goes on") {
    const ReadyPipe pipe;
    PollLoop loop;
    int told = 0;
    auto watch = loop.watch(pipe.read.get(), {.reading = true}, [&](PollLoop::Event) { ++told; });

    auto moved = std::move(watch);
    watch = {};
    loop.runOnce();

    CHECK(told == 1);
    moved = {};
    loop.runOnce(0ms);
    CHECK(told == 1);
}

TEST_CASE("the other side's end is told of whatever is watched for") {
    ReadyPipe pipe;
    PollLoop loop;
    bool canRead = false;
    const auto watch =
        loop.watch(pipe.read.get(), {}, [&](PollLoop::Event event) { canRead = event.canRead; });

    loop.runOnce(0ms);
    CHECK_FALSE(canRead);
    pipe.write = {};
    loop.runOnce();

    CHECK(canRead);
}

TEST_CASE("what there is no memory to watch is not watched, and can be again") {
    const ReadyPipe pipe;
    PollLoop loop;
    int failed = 0;
    int told = 0;
    PollLoop::Watch watch;
    while (!watch) {
        PollLoop::Handler handler = [&](PollLoop::Event) { ++told; };
        allocationsLeft = ++failed;
        try {
            watch = loop.watch(pipe.read.get(), {.reading = true}, std::move(handler));
        } catch (const std::bad_alloc&) {
            loop.runOnce(0ms);
            continue;
        }
        allocationsLeft = -1;
    }

    CHECK(failed > 1);
    CHECK(told == 0);
    loop.runOnce();
    CHECK(told == 1);
}

TEST_CASE("a timer is set without any memory") {
    PollLoop loop;
    int told = 0;
    PollLoop::Timer timer(loop, [&] { ++told; });

    allocationsLeft = 1;
    timer.setAfter(1h);
    timer.setAfter(0ms);
    const bool isNoneTaken = std::exchange(allocationsLeft, -1) == 1;
    loop.runOnce();

    CHECK(isNoneTaken);
    CHECK(told == 1);
    CHECK_FALSE(timer.isSet());
}

TEST_CASE("what cannot be watched is not") {
    PollLoop loop;
    CHECK_FALSE(loop.watch(-1, {.reading = true}, [](PollLoop::Event) {}));
}

TEST_CASE("timers are called in the order of their times, once") {
    PollLoop loop;
    std::string told;
    PollLoop::Timer late(loop, [&] { told += "late "; });
    PollLoop::Timer early(loop, [&] { told += "early "; });
    PollLoop::Timer never(loop, [&] { told += "never "; });
    const auto now = PollLoop::Clock::now();
    late.set(now - 1ms);
    early.set(now - 2ms);
    never.set(now - 3ms);
    never.clear();
    CHECK(late.isSet());

    loop.runOnce();
    loop.runOnce(0ms);

    CHECK(told == "early late ");
    CHECK_FALSE(late.isSet());
}

TEST_CASE("a timer ends a wait") {
    PollLoop loop;
    int told = 0;
    PollLoop::Timer timer(loop, [&] { ++told; });
    timer.setAfter(5ms);

    while (told == 0) REQUIRE(loop.runOnce());

    CHECK(told == 1);
}

TEST_CASE("a timer that sets itself again keeps nobody from being called") {
    const ReadyPipe pipe;
    PollLoop loop;
    int calls = 0;
    PollLoop::Timer timer(loop, [&] {
        ++calls;
        timer.set({});
    });
    timer.set({});
    const auto watch =
        loop.watch(pipe.read.get(), {.reading = true}, [&](PollLoop::Event) { loop.stop(); });

    loop.run();

    CHECK(calls == 1);
}

TEST_CASE("a timer may end itself and others") {
    PollLoop loop;
    int told = 0;
    std::optional<PollLoop::Timer> first;
    std::optional<PollLoop::Timer> second;
    const auto endBoth = [&, text = std::string(100, 'x')] {
        first.reset();
        second.reset();
        ++told;
        CHECK(text.size() == 100);
    };
    first.emplace(loop, endBoth);
    second.emplace(loop, endBoth);
    first->set({});
    second->set({});

    loop.runOnce();
    loop.runOnce(0ms);

    CHECK(told == 1);
}

} // namespace korvane::test
