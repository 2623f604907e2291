#pragma once

#include "../Messages.h"
#include "ProxyWorld.h"
#include "korvane-runner/Bus/Linux/OutputQueue.h"
#include "korvane-runner/Bus/MessageHeader.h"

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace korvane::test {

/// A message that a client got.
struct Received {
    std::shared_ptr<const std::string> bytes;
    runner::bus::MessageHeader header; ///< views of the bytes
    runner::bus::Descriptors descriptors{};

    std::string_view body() const;
    /// The text that its body begins with.
    std::string text() const;
    /// The number that it begins with.
    std::uint32_t number() const;
};

/// Whether the client talks to the proxy, as the programs of the instance do, or to the bus, as the
/// user's own.
enum class At { proxy, bus };

/// A program that writes and reads bytes. While it waits the proxy runs.
class RawClient {
public:
    explicit RawClient(ProxyWorld& world, At at = At::proxy);
    RawClient(RawClient&& other) = default;

    /// All of it; descriptors go with the first byte.
    void send(std::string_view bytes, const std::vector<int>& descriptors = {});
    /// What the socket takes now, in bytes.
    std::size_t sendSome(std::string_view bytes, const std::vector<int>& descriptors = {});
    /// One line, without its end.
    std::string receiveLine();
    Received receive();
    /// The next answer to that call; what comes before is dropped.
    Received receiveAnswer(std::uint32_t serial = 7);
    /// Waits until the connection is ended; what comes before is dropped.
    bool isEnded();
    void close() { socket_ = {}; }
    int socket() const { return socket_.get(); }

    /// Says all that a library says first, and takes what it is answered.
    RawClient& join();
    const std::string& uniqueName() const { return uniqueName_; }

    /// Asks the bus something, and waits for the answer.
    Received ask(const RawMessage& call);
    /// Asks the bus for a name; 1 where it has it then.
    std::uint32_t requestName(const std::string& name, char order = 'l');

private:
    bool read();
    void need(std::size_t size);

    ProxyWorld& world_;
    ambrel::OwnedFd socket_;
    std::string buffer_;
    runner::bus::Descriptors descriptors_;
    std::string uniqueName_;
};

/// Returns when the bus has done all that the client has asked before.
void waitForBus(RawClient& client);

/// What programs say before they are in.
std::string handshake();
RawMessage hello();
RawMessage requestNameCall(const std::string& name, char order = 'l');

} // namespace korvane::test
