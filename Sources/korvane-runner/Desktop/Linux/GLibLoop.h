#pragma once

#include "korvane-runner/Desktop/AppLoop.h"

#include <memory>

namespace korvane::runner {

/// The default main context of GLib, on which GTK and GIO work as well.
class GLibLoop final : public AppLoop {
public:
    GLibLoop();
    GLibLoop(const GLibLoop&) = delete;
    GLibLoop& operator=(const GLibLoop&) = delete;
    /// What is still posted or watched is not called any more.
    ~GLibLoop() override;

    int run() override;
    void end(int status) override;
    void post(std::function<void()> work) override;
    void after(std::chrono::milliseconds delay, std::function<void()> work) override;
    void whenReadable(int descriptor, std::function<Watching()> callback) override;

private:
    struct Call;
    struct State;

    std::shared_ptr<State> state_;
};

} // namespace korvane::runner
