#include "korvane-runner/Bus/Linux/HelperChannel.h"

#include "Ambrel/Platform/FileError.h"
#include "Ambrel/Platform/Posix/Retry.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <sys/socket.h>
#include <sys/uio.h>

namespace korvane::runner::bus {

namespace {

using namespace ambrel;

/// In front of the text, as both ends of one program have it.
struct Head {
    std::int32_t kind;
    std::int32_t number;
    std::uint64_t signals;
};

constexpr std::size_t longestText = 16384; // a sentence with two paths in it

} // namespace

std::pair<HelperChannel, HelperChannel> HelperChannel::makePair() {
    std::array<int, 2> ends{};
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends.data()) != 0) {
        throwFileError("make", "a connection to the process beside the program");
    }
    return {HelperChannel(OwnedFd(ends[0])), HelperChannel(OwnedFd(ends[1]))};
}

bool HelperChannel::send(const HelperMessage& message) const noexcept {
    Head head{static_cast<std::int32_t>(message.kind), message.number, message.signals};
    const auto size = std::min(message.text.size(), longestText);
    std::array<iovec, 2> parts{
        {{&head, sizeof head}, {const_cast<char*>(message.text.data()), size}}};
    msghdr whole{};
    whole.msg_iov = parts.data();
    whole.msg_iovlen = parts.size();
    return retryInterrupted(
               [&] { return ::sendmsg(socket_.get(), &whole, MSG_NOSIGNAL | MSG_DONTWAIT); }) >= 0;
}

std::optional<HelperMessage> HelperChannel::receive(Wait wait) {
    if (isOver_) return std::nullopt;
    std::array<char, sizeof(Head) + longestText> bytes; // filled by the system
    const int flags = wait == Wait::no ? MSG_DONTWAIT : 0;
    const auto size =
        retryInterrupted([&] { return ::recv(socket_.get(), bytes.data(), bytes.size(), flags); });
    const bool isNone = size < 0 && errno == EAGAIN;
    if (isNone) return std::nullopt;
    isOver_ = size < static_cast<ssize_t>(sizeof(Head));
    if (isOver_) return std::nullopt;
    Head head{};
    std::memcpy(&head, bytes.data(), sizeof head);
    return HelperMessage{static_cast<HelperMessage::Kind>(head.kind), head.number, head.signals,
                         std::string(bytes.data() + sizeof head, bytes.data() + size)};
}

} // namespace korvane::runner::bus
