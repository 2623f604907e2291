#pragma once

#include "korvane-runner/Desktop/Desktop.h"

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <utility>
#include <vector>

namespace korvane::test {

/// A loop that does nothing until it is told to.
class FakeLoop final : public runner::AppLoop {
public:
    int run() override;
    void end(int endStatus) override;
    void post(std::function<void()> work) override { posted.push_back(std::move(work)); }
    void after(std::chrono::milliseconds delay, std::function<void()> work) override;
    void whenReadable(int descriptor, std::function<Watching()> callback) override;

    /// Waits for what is watched and serves it until the loop has been ended. For `whenRun`.
    void serveUntilEnd();

    /// Everything that was to happen after a while happens now.
    void letTimePass();

    std::optional<int> status; ///< since the end
    std::vector<std::function<void()>> posted;
    std::vector<std::pair<std::chrono::milliseconds, std::function<void()>>> timers;
    std::map<int, std::function<Watching()>> watched;
    std::function<void()> whenRun; ///< instead of waiting
};

/// Shows one item, for as long as somebody holds it.
class FakeStatusArea final : public runner::StatusArea {
public:
    std::unique_ptr<runner::StatusItem> show(runner::StatusItemSetup setup) override;

    /// The person chooses the entry of that title.
    void choose(const std::string& title) const;

    std::optional<runner::StatusItemSetup> shown;
};

struct FakeWindows final : runner::ProgramWindows {
    void bringToFront(const std::set<int>& processes) override {
        broughtToFront.push_back(processes);
    }

    std::vector<std::set<int>> broughtToFront;
};

/// What a host without windows asks of a desktop.
struct FakeDesktop final : runner::Desktop {
    runner::AppLoop& loop() override { return fakeLoop; }
    runner::StatusArea& statusArea() override { return fakeStatusArea; }
    runner::ProgramWindows& windows() override { return fakeWindows; }
    void flush() override {
        if (whenFlushed) whenFlushed(fakeStatusArea.shown.has_value());
    }

    FakeLoop fakeLoop;
    FakeStatusArea fakeStatusArea;
    FakeWindows fakeWindows;
    std::function<void(bool hasItem)> whenFlushed;
};

} // namespace korvane::test
