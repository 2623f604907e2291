#include "korvane-runner/Desktop/AppLoopContract.h"

#include "Ambrel/Platform/Pipe.h"
#include "Support/Expect.h"

#include <chrono>
#include <functional>
#include <string>
#include <thread>
#include <unistd.h>

namespace korvane::test {

namespace {

using namespace korvane::runner;
using ambrel::Pipe;
using Watching = AppLoop::Watching;

char take(const Pipe& pipe) {
    char byte = 0;
    return ::read(pipe.readEnd.get(), &byte, 1) == 1 ? byte : '.';
}

void give(const Pipe& pipe, const std::string& bytes) {
    REQUIRE(::write(pipe.writeEnd->get(), bytes.data(), bytes.size()) ==
            static_cast<ssize_t>(bytes.size()));
}

void checkEnd(AppLoop& loop) {
    SUBCASE("the first status is the loop's") {
        loop.post([&] {
            loop.end(3);
            loop.end(4);
        });
        CHECK(loop.run() == 3);
    }
    SUBCASE("a loop that was told to end before it ran does not wait") {
        bool wasCalled = false;
        loop.post([&] { wasCalled = true; });
        loop.end(5);
        CHECK(loop.run() == 5);
        CHECK_FALSE(wasCalled);
    }
    SUBCASE("nothing that was posted or is watched is called after the end") {
        Pipe pipe = Pipe::make();
        give(pipe, "x");
        int late = 0;
        loop.post([&] {
            loop.end(0);
            loop.post([&] { ++late; });
            loop.whenReadable(pipe.readEnd.get(), [&] {
                ++late;
                return Watching::goesOn;
            });
        });
        loop.post([&] { ++late; });
        CHECK(loop.run() == 0);
        CHECK(late == 0);
    }
}

void checkPost(AppLoop& loop) {
    SUBCASE("work is done in the order of posting, also work that work posts") {
        std::string order;
        loop.post([&] {
            order += 'a';
            loop.post([&] {
                order += 'd';
                loop.end(0);
            });
            order += 'b';
        });
        loop.post([&] { order += 'c'; });
        CHECK(order.empty());
        loop.run();
        CHECK(order == "abcd");
    }
    SUBCASE("work for later is done after what was posted, the shorter delay first") {
        using std::chrono_literals::operator""ms;
        std::string order;
        loop.after(20ms, [&] {
            order += 'c';
            loop.end(0);
        });
        loop.after(1ms, [&] { order += 'b'; });
        loop.post([&] { order += 'a'; });
        CHECK(order.empty());
        loop.run();
        CHECK(order == "abc");
    }
    SUBCASE("work for later is done however much is posted meanwhile") {
        bool isOver = false;
        std::function<void()> again = [&] {
            if (!isOver) loop.post(again);
        };
        loop.post(again);
        loop.after(std::chrono::milliseconds(5), [&] {
            isOver = true;
            loop.end(0);
        });
        loop.run();
        CHECK(isOver);
    }
    SUBCASE("work from another thread wakes a loop that waits, and is done on the loop's thread") {
        Pipe pipe = Pipe::make();
        std::thread::id worker;
        std::thread other([&] {
            take(pipe); // by then the loop runs
            loop.post([&] {
                worker = std::this_thread::get_id();
                loop.end(6);
            });
        });
        loop.post([&] { give(pipe, "x"); });
        CHECK(loop.run() == 6);
        other.join();
        CHECK(worker == std::this_thread::get_id());
    }
}

void checkWatching(AppLoop& loop) {
    Pipe pipe = Pipe::make();
    std::string seen;
    SUBCASE("what could be read before the loop ran is told, for as long as it can be read") {
        give(pipe, "abc");
        loop.whenReadable(pipe.readEnd.get(), [&] {
            seen += take(pipe);
            if (seen == "abc") loop.end(0);
            return Watching::goesOn;
        });
        loop.run();
        CHECK(seen == "abc");
    }
    SUBCASE("a watch that ends is not called again, though there is more to read") {
        give(pipe, "abc");
        loop.whenReadable(pipe.readEnd.get(), [&] {
            seen += take(pipe);
            // Each turn of the loop would call a watch that went on before this.
            loop.post([&] { loop.post([&] { loop.end(0); }); });
            return Watching::ends;
        });
        loop.run();
        CHECK(seen == "a");
    }
    SUBCASE("the end of what can be read is told") {
        loop.whenReadable(pipe.readEnd.get(), [&] {
            seen += take(pipe);
            loop.end(0);
            return Watching::ends;
        });
        loop.post([&] { pipe.writeEnd.reset(); });
        loop.run();
        CHECK(seen == ".");
    }
    SUBCASE("two watches do not take each other's place") {
        Pipe second = Pipe::make();
        loop.whenReadable(pipe.readEnd.get(), [&] {
            seen += take(pipe);
            give(second, "y");
            return Watching::ends;
        });
        loop.whenReadable(second.readEnd.get(), [&] {
            seen += take(second);
            loop.end(0);
            return Watching::ends;
        });
        give(pipe, "x");
        loop.run();
        CHECK(seen == "xy");
    }
}

} // namespace

void checkAppLoop(const MakeLoop& make) {
    const auto loop = make();
    SUBCASE("end") { checkEnd(*loop); }
    SUBCASE("post") { checkPost(*loop); }
    SUBCASE("whenReadable") { checkWatching(*loop); }
}

} // namespace korvane::test
