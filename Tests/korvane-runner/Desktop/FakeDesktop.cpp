#include "korvane-runner/Desktop/FakeDesktop.h"

#include <algorithm>
#include <doctest/doctest.h>
#include <poll.h>
#include <utility>

namespace korvane::test {

using namespace runner;

int FakeLoop::run() {
    if (whenRun && !status) whenRun();
    return status.value_or(-1);
}

void FakeLoop::end(int endStatus) {
    if (!status) status = endStatus;
}

void FakeLoop::after(std::chrono::milliseconds delay, std::function<void()> work) {
    timers.emplace_back(delay, std::move(work));
}

void FakeLoop::whenReadable(int descriptor, std::function<Watching()> callback) {
    watched[descriptor] = std::move(callback);
}

void FakeLoop::letTimePass() {
    for (const auto& [delay, work] : std::exchange(timers, {})) {
        if (!status) work();
    }
}

void FakeLoop::serveUntilEnd() {
    while (!status) {
        std::vector<pollfd> descriptors;
        for (const auto& [descriptor, callback] : watched) {
            descriptors.push_back({.fd = descriptor, .events = POLLIN, .revents = 0});
        }
        constexpr int aMinute = 60'000;
        REQUIRE(::poll(descriptors.data(), descriptors.size(), aMinute) > 0);
        for (const auto& [descriptor, events, found] : descriptors) {
            if (found == 0 || status) continue;
            const auto callback = watched.at(descriptor);
            if (callback() == Watching::ends) watched.erase(descriptor);
        }
    }
}

namespace {

class FakeStatusItem final : public StatusItem {
public:
    explicit FakeStatusItem(FakeStatusArea& area) : area_(area) {}
    FakeStatusItem(const FakeStatusItem&) = delete;
    FakeStatusItem& operator=(const FakeStatusItem&) = delete;
    ~FakeStatusItem() override { area_.shown.reset(); }

private:
    FakeStatusArea& area_;
};

} // namespace

std::unique_ptr<StatusItem> FakeStatusArea::show(StatusItemSetup setup) {
    REQUIRE_FALSE(shown);
    shown = std::move(setup);
    return std::make_unique<FakeStatusItem>(*this);
}

void FakeStatusArea::choose(const std::string& title) const {
    REQUIRE(shown);
    const auto entry = std::ranges::find(shown->menu, title, &StatusMenuEntry::title);
    REQUIRE(entry != shown->menu.end());
    REQUIRE(entry->chosen);
    const auto chosen = entry->chosen; // it may take the item away
    chosen();
}

} // namespace korvane::test
