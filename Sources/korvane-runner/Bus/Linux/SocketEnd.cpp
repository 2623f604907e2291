#include "korvane-runner/Bus/Linux/SocketEnd.h"

#include "Ambrel/Platform/Posix/Retry.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <iterator>
#include <sys/socket.h>
#include <sys/uio.h>
#include <utility>

namespace korvane::runner::bus {

namespace {

using namespace ambrel;

/// The descriptors that came with what was read. Throws std::bad_alloc, and they are closed then.
void takeDescriptors(msghdr& message, Descriptors& into) {
    if (message.msg_controllen == 0) return;
    std::array<OwnedFd, mostDescriptors> owned; // at once: until then they are nobody's
    std::size_t all = 0;
    for (auto* header = CMSG_FIRSTHDR(&message); header != nullptr;
         header = CMSG_NXTHDR(&message, header)) {
        if (header->cmsg_level != SOL_SOCKET || header->cmsg_type != SCM_RIGHTS) continue;
        const auto count = (header->cmsg_len - CMSG_LEN(0)) / sizeof(int);
        for (std::size_t i = 0; i < count; ++i) {
            int number = -1;
            std::memcpy(&number, CMSG_DATA(header) + i * sizeof(int), sizeof(int));
            owned.at(all++) = OwnedFd(number);
        }
    }
    into.insert(into.end(), std::make_move_iterator(owned.begin()),
                std::make_move_iterator(owned.begin() + static_cast<std::ptrdiff_t>(all)));
}

} // namespace

SocketEnd::SocketEnd(PollLoop& loop, OwnedFd socket, Handler handler)
    : loop_(&loop), socket_(std::move(socket)), handler_(std::move(handler)) {}

std::string_view SocketEnd::read(std::span<char> room) {
    alignas(cmsghdr) std::array<char, CMSG_SPACE(mostDescriptors * sizeof(int))> control{};
    iovec part{room.data(), room.size()};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control.data();
    message.msg_controllen = control.size();
    const auto size = retryInterrupted(
        [&] { return ::recvmsg(socket_.get(), &message, MSG_CMSG_CLOEXEC | MSG_DONTWAIT); });
    if (size > 0) {
        takeDescriptors(message, arrived_);
        return {room.data(), static_cast<std::size_t>(size)};
    }
    if (size == 0 || (errno != EAGAIN && errno != EWOULDBLOCK)) endInput();
    return {};
}

Descriptors SocketEnd::takeArrived(std::size_t count) {
    const auto end = arrived_.begin() + static_cast<std::ptrdiff_t>(count);
    Descriptors taken(std::make_move_iterator(arrived_.begin()), std::make_move_iterator(end));
    arrived_.erase(arrived_.begin(), end);
    return taken;
}

bool SocketEnd::flush() {
    if (!isOpen() || isOutputOver_) return true;
    const auto written = output_.writeTo(socket_.get());
    if (written == OutputQueue::Written::failed) endOutput();
    isHeldUp_ = written == OutputQueue::Written::later;
    return !isHeldUp_;
}

void SocketEnd::endInput() {
    isInputOver_ = true;
    arrived_.clear();
}

void SocketEnd::endOutput() {
    isOutputOver_ = true;
    output_.close();
}

void SocketEnd::update(bool isWanted) {
    isReading_ = isWanted && !isInputOver_ && isOpen();
    const PollLoop::Interest interest{.reading = isReading_,
                                      .writing = !output_.isEmpty() && !isHeldUp_};
    if (!isOpen() || interest == PollLoop::Interest{}) {
        watch_ = {};
    } else if (watch_) {
        watch_.setInterest(interest);
    } else {
        watch_ = loop_->watch(socket_.get(), interest, handler_);
        if (watch_) return;
        endInput();
        endOutput();
    }
}

} // namespace korvane::runner::bus
