#include "korvane-runner/Bus/Linux/OutputQueue.h"

#include "Ambrel/Platform/Posix/Retry.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <sys/socket.h>
#include <sys/uio.h>

namespace korvane::runner::bus {

namespace {

using namespace ambrel;

/// Small messages are written together, and memory is given back in pieces of this size.
constexpr std::size_t chunkSize = 32 * 1024;

/// An open file is the system's memory, which is counted here so that nobody can make it many.
constexpr std::size_t descriptorLoad = 4096;

/// One write: the bytes of some chunks, and the descriptors of one.
class Write {
public:
    void add(const std::string& bytes, std::size_t written) {
        auto* begin = const_cast<char*>(bytes.data()) + written;
        parts_[count_++] = {begin, bytes.size() - written};
    }
    bool isFull() const { return count_ == parts_.size(); }

    void attach(const Descriptors& descriptors) {
        std::array<int, mostDescriptors> numbers{};
        std::ranges::transform(descriptors, numbers.begin(), &OwnedFd::get);
        message_.msg_control = control_.data();
        message_.msg_controllen = CMSG_SPACE(descriptors.size() * sizeof(int));
        auto* header = CMSG_FIRSTHDR(&message_);
        header->cmsg_level = SOL_SOCKET;
        header->cmsg_type = SCM_RIGHTS;
        header->cmsg_len = CMSG_LEN(descriptors.size() * sizeof(int));
        std::memcpy(CMSG_DATA(header), numbers.data(), descriptors.size() * sizeof(int));
    }

    ssize_t send(int socket) {
        message_.msg_iov = parts_.data();
        message_.msg_iovlen = count_;
        return retryInterrupted(
            [&] { return ::sendmsg(socket, &message_, MSG_NOSIGNAL | MSG_DONTWAIT); });
    }

private:
    std::array<iovec, 16> parts_{};
    std::size_t count_ = 0;
    msghdr message_{};
    alignas(cmsghdr) std::array<char, CMSG_SPACE(mostDescriptors * sizeof(int))> control_{};
};

} // namespace

void OutputQueue::append(std::string_view bytes, Descriptors descriptors) {
    bytes_ += bytes.size();
    descriptors_ += descriptors.size();
    const bool joins = descriptors.empty() && !chunks_.empty() &&
                       chunks_.back().descriptors.empty() &&
                       chunks_.back().bytes.size() + bytes.size() <= chunkSize;
    if (joins) {
        chunks_.back().bytes += bytes;
    } else {
        chunks_.push_back({.bytes = std::string(bytes), .descriptors = std::move(descriptors)});
    }
}

void OutputQueue::push(std::string_view bytes, Descriptors descriptors, Message message) {
    if (isClosed_) return;
    if (!bytes.empty()) append(bytes, std::move(descriptors));
    goesOn_ = message == Message::goesOn;
    if (!goesOn_) flushWaiting();
}

void OutputQueue::insert(std::string bytes, Descriptors descriptors) {
    if (isClosed_) return;
    inserted_ += bytes.size();
    waiting_.push_back({.bytes = std::move(bytes), .descriptors = std::move(descriptors)});
    if (!goesOn_) flushWaiting();
}

void OutputQueue::flushWaiting() {
    while (!waiting_.empty()) {
        auto& chunk = waiting_.front();
        if (chunk.bytes.size() <= chunkSize) {
            append(chunk.bytes, std::move(chunk.descriptors));
            waiting_.pop_front();
            continue;
        }
        bytes_ += chunk.bytes.size();
        descriptors_ += chunk.descriptors.size();
        chunks_.splice(chunks_.end(), waiting_, waiting_.begin());
    }
}

OutputQueue::Written OutputQueue::writeTo(int socket) {
    while (!chunks_.empty()) {
        const auto written = writeNext(socket);
        if (written != Written::all) return written;
    }
    inserted_ = 0;
    return Written::all;
}

/// What goes in one write. Descriptors arrive with the first byte of theirs, and whoever reads must
/// not get bytes of another message with them.
OutputQueue::Written OutputQueue::writeNext(int socket) {
    Write write;
    if (!chunks_.front().descriptors.empty()) {
        write.add(chunks_.front().bytes, chunks_.front().written);
        write.attach(chunks_.front().descriptors);
    } else {
        for (const auto& chunk : chunks_) {
            if (!chunk.descriptors.empty() || write.isFull()) break;
            write.add(chunk.bytes, chunk.written);
        }
    }
    const auto written = write.send(socket);
    if (written > 0) {
        drop(static_cast<std::size_t>(written));
        return Written::all;
    }
    if (errno == EAGAIN || errno == EWOULDBLOCK) return Written::some;
    if (errno == ETOOMANYREFS || errno == ENOBUFS || errno == ENOMEM) return Written::later;
    return Written::failed;
}

void OutputQueue::drop(std::size_t written) {
    bytes_ -= written;
    descriptors_ -= chunks_.front().descriptors.size();
    chunks_.front().descriptors.clear();
    while (written > 0) {
        auto& chunk = chunks_.front();
        const auto part = std::min(written, chunk.bytes.size() - chunk.written);
        chunk.written += part;
        written -= part;
        if (chunk.written == chunk.bytes.size()) chunks_.pop_front();
    }
}

void OutputQueue::close() {
    isClosed_ = true;
    chunks_.clear();
    waiting_.clear();
    bytes_ = 0;
    descriptors_ = 0;
    inserted_ = 0;
}

std::size_t OutputQueue::load() const { return bytes_ + descriptors_ * descriptorLoad; }

} // namespace korvane::runner::bus
