#include "RawClient.h"

#include "Receiving.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace korvane::test {

using namespace korvane::runner::bus;

namespace {

std::string hexOf(const std::string& text) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string result;
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        result += {digits[byte >> 4U], digits[byte & 15U]};
    }
    return result;
}

ambrel::OwnedFd connectedTo(const Path& path) {
    ambrel::OwnedFd socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::strcpy(address.sun_path, path.c_str());
    REQUIRE(::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) ==
            0);
    return socket;
}

} // namespace

std::string handshake() {
    const auto first = "AUTH EXTERNAL " + hexOf(std::to_string(::getuid()));
    return std::string(1, '\0') + first + "\r\nNEGOTIATE_UNIX_FD\r\nBEGIN\r\n";
}

RawMessage hello() { return busCall("Hello"); }

RawMessage requestNameCall(const std::string& name, char order) {
    constexpr std::uint32_t doNotQueue = 4;
    return busCall("RequestName", order).withBody("su", Bytes(order).text(name).number(doNotQueue));
}

std::string_view Received::body() const {
    return std::string_view(*bytes).substr(bytes->size() - header.bodyLength);
}

std::uint32_t Received::number() const {
    WireReader reader(header.order, body());
    return reader.number();
}

std::string Received::text() const {
    WireReader reader(header.order, body());
    return std::string(reader.text());
}

RawClient::RawClient(ProxyWorld& world, At at)
    : world_(world), socket_(connectedTo(at == At::proxy ? world.socket() : world.bus().socket())) {
}

std::size_t RawClient::sendSome(std::string_view bytes, const std::vector<int>& descriptors) {
    alignas(cmsghdr) std::array<char, CMSG_SPACE(mostDescriptors * sizeof(int))> control{};
    iovec part{const_cast<char*>(bytes.data()), bytes.size()};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    if (!descriptors.empty()) {
        const auto size = descriptors.size() * sizeof(int);
        message.msg_control = control.data();
        message.msg_controllen = CMSG_SPACE(size);
        auto* header = CMSG_FIRSTHDR(&message);
        header->cmsg_level = SOL_SOCKET;
        header->cmsg_type = SCM_RIGHTS;
        header->cmsg_len = CMSG_LEN(size);
        std::memcpy(CMSG_DATA(header), descriptors.data(), size);
    }
    const auto sent = ::sendmsg(socket_.get(), &message, MSG_NOSIGNAL | MSG_DONTWAIT);
    if (sent < 0) REQUIRE((errno == EAGAIN || errno == EPIPE || errno == ECONNRESET));
    return sent < 0 ? 0 : static_cast<std::size_t>(sent);
}

void RawClient::send(std::string_view bytes, const std::vector<int>& descriptors) {
    auto rest = descriptors;
    while (!bytes.empty()) {
        const auto sent = sendSome(bytes, rest);
        REQUIRE((sent > 0 || errno == EAGAIN)); // else whoever is to read has gone
        bytes.remove_prefix(sent);
        if (sent > 0) rest.clear();
        if (!bytes.empty()) world_.waitFor(socket_.get(), {.writing = true});
    }
}

/// Whether there may be more.
bool RawClient::read() {
    const auto size = receiveOnce(socket_, 65536, buffer_, descriptors_);
    return size > 0 || (size < 0 && errno == EAGAIN);
}

void RawClient::need(std::size_t size) {
    while (buffer_.size() < size) {
        world_.waitFor(socket_.get(), {.reading = true});
        REQUIRE(read());
    }
}

std::string RawClient::receiveLine() {
    while (buffer_.find("\r\n") == std::string::npos) need(buffer_.size() + 1);
    const auto size = buffer_.find("\r\n");
    auto line = buffer_.substr(0, size);
    buffer_.erase(0, size + 2);
    return line;
}

Received RawClient::receive() {
    need(frameStart);
    const auto frame = frameOf(buffer_);
    REQUIRE(frame);
    need(frame->length());
    const auto bytes = std::make_shared<const std::string>(buffer_.substr(0, frame->length()));
    buffer_.erase(0, frame->length());
    const auto header = MessageHeader::read(*bytes);
    REQUIRE(header);
    Received result{.bytes = bytes, .header = *header};
    REQUIRE(descriptors_.size() >= header->unixFds);
    for (std::uint32_t i = 0; i < header->unixFds; ++i) {
        result.descriptors.push_back(std::move(descriptors_.front()));
        descriptors_.erase(descriptors_.begin());
    }
    return result;
}

Received RawClient::receiveAnswer(std::uint32_t serial) {
    while (true) {
        auto message = receive();
        if (message.header.replySerial == serial) return message;
    }
}

bool RawClient::isEnded() {
    do {
        world_.waitFor(socket_.get(), {.reading = true});
        buffer_.clear();
    } while (read());
    return true;
}

RawClient& RawClient::join() {
    send(handshake() + hello().bytes());
    REQUIRE(receiveLine().starts_with("OK "));
    REQUIRE(receiveLine() == "AGREE_UNIX_FD");
    uniqueName_ = receiveAnswer().text();
    const auto acquired = receive();
    REQUIRE(acquired.header.member == "NameAcquired");
    return *this;
}

Received RawClient::ask(const RawMessage& call) {
    send(call.bytes());
    return receiveAnswer(call.serial);
}

std::uint32_t RawClient::requestName(const std::string& name, char order) {
    return ask(requestNameCall(name, order)).number();
}

void waitForBus(RawClient& client) {
    auto call = busCall("GetId");
    call.serial = 99;
    client.send(call.bytes());
    client.receiveAnswer(99);
}

} // namespace korvane::test
