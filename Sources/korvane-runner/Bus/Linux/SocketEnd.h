#pragma once

#include "korvane-runner/Bus/Linux/OutputQueue.h"
#include "korvane-runner/Bus/Linux/PollLoop.h"

#include <functional>
#include <span>
#include <string_view>

namespace korvane::runner::bus {

/// One of the two sockets that a program's messages go through. It ends in two steps: nothing more
/// comes from it, and nothing more can be written to it.
class SocketEnd {
public:
    using Handler = std::function<void(PollLoop::Event)>;

    SocketEnd() = default;
    /// Nothing is watched before update() is called.
    SocketEnd(PollLoop& loop, ambrel::OwnedFd socket, Handler handler);

    bool isOpen() const { return static_cast<bool>(socket_); }

    /// Reads once, at most as much as there is room for: what was read, valid for as long as `room`
    /// is. Empty where there is nothing now, or where nothing more will come.
    std::string_view read(std::span<char> room);
    /// What has come with bytes and belongs to no message yet, in its order.
    Descriptors& arrived() { return arrived_; }
    /// Takes the first of them, which are so many at least.
    Descriptors takeArrived(std::size_t count);

    /// What is to be written; for whoever has gone it is dropped.
    OutputQueue& output() { return output_; }
    const OutputQueue& output() const { return output_; }
    /// Writes what the socket takes. False where it has to be tried again after some time, without
    /// waiting for the socket.
    bool flush();

    /// Nothing more is read, or written.
    void endInput();
    void endOutput();
    bool isInputOver() const { return isInputOver_; }

    /// Watches for what is of use: for more to read only where `isWanted`. What is over is not
    /// watched at all, since it would be told again and again.
    void update(bool isWanted);
    bool isReading() const { return isReading_; }

private:
    PollLoop* loop_ = nullptr;
    ambrel::OwnedFd socket_;
    Handler handler_;
    PollLoop::Watch watch_;
    OutputQueue output_;
    Descriptors arrived_;
    bool isInputOver_ = false;
    bool isOutputOver_ = false;
    bool isReading_ = false;
    bool isHeldUp_ = false; ///< it can be written to, and takes nothing
};

} // namespace korvane::runner::bus
