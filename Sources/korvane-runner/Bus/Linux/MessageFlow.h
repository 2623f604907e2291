#pragma once

#include "korvane-runner/Bus/Conversation.h"
#include "korvane-runner/Bus/Linux/SocketEnd.h"
#include "korvane-runner/Bus/MessageStream.h"

namespace korvane::runner::bus {

/// A message of a program that waits for somebody to have a name.
struct HeldMessage {
    std::string head;    ///< the header that the program wrote
    Side to = Side::bus; ///< who is to get something then
    std::string bytes{}; ///< and what; empty: nothing
    Descriptors descriptors{};
};

/// Where messages wait, and who is told of names.
class WaitingRoom {
public:
    virtual ~WaitingRoom() = default;

    /// Keeps a message of the client `client` until the service with that name is there. False
    /// where there is no room for it.
    virtual bool hold(std::uint64_t client, const std::string& service, HeldMessage message) = 0;
    /// Takes room for that many bytes of a message that has not come whole yet. False where there
    /// is none; else giveBack() is called for as many.
    virtual bool reserve(std::size_t bytes) = 0;
    virtual void giveBack(std::size_t bytes) noexcept = 0;
    /// A program of the instance has the name, as programs know it.
    virtual void acquired(const std::string& name) = 0;
};

/// What one program and the bus say to each other.
struct LinkParts {
    std::uint64_t client; ///< the program's number
    Conversation& conversation;
    SocketEnd& clientEnd;
    SocketEnd& busEnd;
    WaitingRoom& room;

    SocketEnd& end(Side side) const { return side == Side::client ? clientEnd : busEnd; }
};

/// The messages from one side: asks what becomes of them, and hands them on with their descriptors.
class MessageFlow final : private MessageReceiver {
public:
    MessageFlow(Side from, LinkParts parts);
    MessageFlow(const MessageFlow&) = delete;
    MessageFlow& operator=(const MessageFlow&) = delete;
    ~MessageFlow() override { giveBack(); }

    /// The next bytes from that side, behind the handshake.
    Fault take(std::string_view bytes);

private:
    Checked<Body> beginMessage(const MessageHeader& header, std::string_view head) override;
    Fault message(const MessageHeader& header, std::string_view bytes) override;
    void bodyPart(std::string_view bytes, Part part) override;

    SocketEnd& source() const { return parts_.end(from_); }
    OutputQueue& queueTo(Side side) const { return parts_.end(side).output(); }
    bool hasDescriptors(const MessageHeader& header) const;
    Verdict ask(const MessageHeader& header, std::string_view body);
    void beginStreamed(const MessageHeader& header, std::string_view head, const Verdict& verdict);
    static bool deliverWhole(OutputQueue& queue, const Delivery& delivery,
                             Descriptors& descriptors);
    void deliver(const MessageHeader& header, std::string_view bytes, const Verdict& verdict,
                 Descriptors descriptors);
    void hold(const MessageHeader& header, std::string_view bytes, const Verdict& verdict,
              Descriptors descriptors);
    void refuse(const MessageHeader& header, const std::string& service);
    bool reserve(const MessageHeader& header, std::string_view head);
    void giveBack() noexcept;

    Side from_;
    LinkParts parts_;
    MessageStream stream_;
    std::size_t reserved_ = 0;      ///< for the message that is being collected
    OutputQueue* bodyTo_ = nullptr; ///< where the body that is streamed goes; null: nowhere
};

} // namespace korvane::runner::bus
