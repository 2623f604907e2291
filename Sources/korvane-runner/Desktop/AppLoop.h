#pragma once

#include <chrono>
#include <functional>

namespace korvane::runner {

/// The event loop of a desktop's toolkit, as far as a host asks for one. One at a time, made and
/// run on the main thread. What is called from it must not throw: the frames below are the
/// toolkit's.
///
/// Signals and the end of a child need no calls of their own: SignalSource and ChildEnd tell of
/// them by descriptors, on every system.
class AppLoop {
public:
    /// What is to become of a watched descriptor after a call.
    enum class Watching { goesOn, ends };

    virtual ~AppLoop() = default;

    /// Runs until end() and returns its status; at once when that was called before. Called once.
    virtual int run() = 0;

    /// Makes run() return `status`. The first call decides. From then on nothing that was posted or
    /// is watched is called any more. On the loop's own thread; others post a call to it.
    virtual void end(int status) = 0;

    /// Calls `work` once on the loop's thread, never before this returns, in the order of posting.
    /// From any thread for as long as the loop exists; not from a signal handler.
    virtual void post(std::function<void()> work) = 0;

    /// Calls `work` once on the loop's thread, `delay` from now or later, however busy the loop is.
    /// On the loop's own thread.
    virtual void after(std::chrono::milliseconds delay, std::function<void()> work) = 0;

    /// Calls `callback` on the loop's thread whenever `descriptor` can be read or has come to its
    /// end, also when that was so before run(). The descriptor stays its owner's and must be open
    /// until the callback returns Watching::ends or the loop has ended. On the loop's own thread.
    virtual void whenReadable(int descriptor, std::function<Watching()> callback) = 0;
};

} // namespace korvane::runner
