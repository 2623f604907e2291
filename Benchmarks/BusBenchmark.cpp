// bus-benchmark ADDRESS calls COUNT | pairs COUNT | bytes SIZE COUNT | day CLIENTS
//
// Programs on the bus at a socket "unix:path=…", for own-names: writes and reads messages itself,
// so that what is measured is the way. "calls": asks the bus, one call after another. "pairs":
// calls another program on the same bus, which answers. "bytes": calls it with an array of SIZE
// bytes, which it sends back. Each prints the microseconds of one call. "day": so many programs
// come, call and go, one after another; prints nothing.
#include "Ambrel/Platform/OwnedFd.h"
#include "korvane-runner/Bus/Linux/BusAddress.h"
#include "korvane-runner/Bus/MessageHeader.h"
#include "korvane-runner/Bus/WireWriter.h"

#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <stdexcept>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace korvane::runner::bus;

constexpr const char* busName = "org.freedesktop.DBus";

struct Message {
    MessageType type = MessageType::methodCall;
    std::uint32_t replySerial = 0;
    std::string destination;
    std::string interface;
    std::string member;
    std::string body{}; ///< bytes of an array
};

std::string bytesOf(const Message& message, std::uint32_t serial) {
    WireWriter body(ByteOrder::little);
    if (!message.body.empty()) {
        body.number(static_cast<std::uint32_t>(message.body.size()));
        body.raw(message.body);
    }
    WireWriter writer(ByteOrder::little);
    writer.byte('l');
    writer.byte(static_cast<std::uint8_t>(message.type));
    writer.byte(0);
    writer.byte(1);
    writer.number(static_cast<std::uint32_t>(body.bytes().size()));
    writer.number(serial);
    const auto fields = writer.beginArray('(');
    const auto text = [&](HeaderField field, const char* type, const std::string& value) {
        if (value.empty()) return;
        writer.align(8);
        writer.byte(static_cast<std::uint8_t>(field));
        writer.signature(type);
        if (*type == 'g') {
            writer.signature(value);
        } else {
            writer.text(value);
        }
    };
    const bool isCall = message.type == MessageType::methodCall;
    text(HeaderField::path, "o", isCall ? "/" : "");
    text(HeaderField::interface, "s", message.interface);
    text(HeaderField::member, "s", message.member);
    text(HeaderField::destination, "s", message.destination);
    text(HeaderField::signature, "g", message.body.empty() ? "" : "ay");
    if (!isCall) {
        writer.align(8);
        writer.byte(static_cast<std::uint8_t>(HeaderField::replySerial));
        writer.signature("u");
        writer.number(message.replySerial);
    }
    writer.endArray(fields);
    writer.align(8);
    return writer.take() + body.bytes();
}

/// A program on the bus.
class Client {
public:
    explicit Client(const std::string& address) {
        const auto bus = BusAddress::parse(address, {});
        if (!bus) throw std::runtime_error("no address: " + address);
        auto connecting = connectTo(*bus);
        if (!connecting.socket) throw std::runtime_error("nobody at " + address);
        socket_ = std::move(connecting.socket);
        ::fcntl(socket_.get(), F_SETFL, 0); // from here on it waits
        join();
    }

    const std::string& name() const { return name_; }

    std::uint32_t send(const Message& message) {
        write(bytesOf(message, ++serial_));
        return serial_;
    }
    /// The next call, or the answer to one.
    MessageHeader receive() {
        buffer_.erase(0, taken_);
        need(frameStart);
        taken_ = frameOf(buffer_)->length();
        need(taken_);
        return *MessageHeader::read(std::string_view(buffer_).substr(0, taken_));
    }
    void call(const Message& message) {
        const auto serial = send(message);
        while (receive().replySerial != serial) {
        }
    }

private:
    void join() {
        std::string name;
        for (const char c : std::to_string(::getuid())) {
            std::array<char, 3> hex{};
            std::snprintf(hex.data(), hex.size(), "%02x", static_cast<unsigned>(c));
            name += hex.data();
        }
        write(std::string(1, '\0') + "AUTH EXTERNAL " + name + "\r\n");
        while (buffer_.find("\r\n") == std::string::npos) read();
        buffer_.clear();
        write("BEGIN\r\n");
        send({.destination = busName, .interface = busName, .member = "Hello"});
        while (true) {
            const auto header = receive();
            if (header.replySerial != 1) continue;
            name_ = header.destination;
            return;
        }
    }

    void write(std::string_view bytes) {
        while (!bytes.empty()) {
            const auto size = ::send(socket_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
            if (size < 0) throw std::runtime_error("cannot write");
            bytes.remove_prefix(static_cast<std::size_t>(size));
        }
    }
    void read() {
        const auto before = buffer_.size();
        buffer_.resize(before + 256 * 1024);
        const auto size = ::recv(socket_.get(), buffer_.data() + before, 256 * 1024, 0);
        if (size <= 0) throw std::runtime_error("cannot read");
        buffer_.resize(before + static_cast<std::size_t>(size));
    }
    void need(std::size_t size) {
        while (buffer_.size() < size) read();
    }

    ambrel::OwnedFd socket_;
    std::string buffer_;
    std::size_t taken_ = 0;
    std::uint32_t serial_ = 0;
    std::string name_;
};

Message getId() { return {.destination = busName, .interface = busName, .member = "GetId"}; }

/// A program in a process of its own that answers each call with the same bytes until it is ended.
class Peer {
public:
    Peer(const std::string& address, const std::string& body) {
        std::array<int, 2> pipe{};
        if (::pipe(pipe.data()) != 0) throw std::runtime_error("no pipe");
        process_ = ::fork();
        if (process_ == 0) {
            Client client(address);
            const auto told = client.name() + "\n";
            if (::write(pipe[1], told.data(), told.size()) < 0) ::_exit(1);
            answer(client, body);
        }
        ::close(pipe[1]);
        std::array<char, 300> name{};
        const auto size = ::read(pipe[0], name.data(), name.size());
        ::close(pipe[0]);
        if (size <= 1) throw std::runtime_error("no other program");
        name_.assign(name.data(), static_cast<std::size_t>(size) - 1);
    }
    Peer(const Peer&) = delete;
    Peer& operator=(const Peer&) = delete;
    ~Peer() {
        ::kill(process_, SIGTERM);
        ::waitpid(process_, nullptr, 0);
    }
    const std::string& name() const { return name_; }

private:
    [[noreturn]] static void answer(Client& client, const std::string& body) {
        while (true) {
            const auto header = client.receive();
            if (header.type != MessageType::methodCall) continue;
            client.send({.type = MessageType::methodReturn,
                         .replySerial = header.serial,
                         .destination = std::string(header.sender),
                         .interface = {},
                         .member = {},
                         .body = body});
        }
    }

    pid_t process_;
    std::string name_;
};

void measure(long count, const std::function<void()>& step) {
    using Clock = std::chrono::steady_clock;
    step(); // what is done once is done then
    const auto begin = Clock::now();
    for (long i = 0; i < count; ++i) step();
    const std::chrono::duration<double, std::micro> all = Clock::now() - begin;
    std::printf("%.2f\n", all.count() / static_cast<double>(count));
}

void callPeer(const std::string& address, std::size_t size, long count) {
    const std::string body(size, 'x');
    const Peer peer(address, body);
    Client client(address);
    const Message call{.destination = peer.name(),
                       .interface = "org.example.Echo",
                       .member = "Echo",
                       .body = body};
    measure(count, [&] { client.call(call); });
}

void liveADay(const std::string& address, long clients) {
    for (long i = 0; i < clients; ++i) {
        Client client(address);
        for (int call = 0; call < 3; ++call) client.call(getId());
    }
}

} // namespace

int main(int count, char** words) {
    const auto number = [&](int index) { return count > index ? std::atol(words[index]) : 0; };
    const std::string address = count > 1 ? words[1] : "";
    const std::string what = count > 2 ? words[2] : "";
    try {
        if (what == "calls") {
            Client client(address);
            measure(number(3), [&] { client.call(getId()); });
        }
        if (what == "pairs") callPeer(address, 0, number(3));
        if (what == "bytes") callPeer(address, static_cast<std::size_t>(number(3)), number(4));
        if (what == "day") liveADay(address, number(3));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "bus-benchmark: %s\n", error.what());
        return 1;
    }
    return 0;
}
