#pragma once

#include "korvane-runner/Bus/MessageHeader.h"

#include <string>
#include <string_view>

namespace korvane::runner::bus {

/// Who is told of the messages in a stream. A fault from it ends the stream.
class MessageReceiver {
public:
    enum class Body {
        collected, ///< message() is called when all of it is there
        streamed,  ///< bodyPart() is called for what is there, until all has come
    };

    virtual ~MessageReceiver() = default;

    /// A message begins; `head` are the bytes of its header. One without a body is always
    /// collected.
    virtual Checked<Body> beginMessage(const MessageHeader& header, std::string_view head) = 0;
    /// All of a message that was to be collected.
    virtual Fault message(const MessageHeader& header, std::string_view bytes) = 0;
    /// The next bytes of a body that was to be streamed, never none.
    enum class Part { middle, last };
    virtual void bodyPart(std::string_view bytes, Part part) = 0;
};

/// Takes apart what one side writes behind the handshake, however it is cut into pieces. Of a
/// message nothing is kept but its header, and its body where somebody wants it whole.
class MessageStream {
public:
    /// Headers of more bytes are a fault.
    explicit MessageStream(std::size_t longestHeader = longestOwnHeader)
        : longestHeader_(longestHeader) {}

    /// What is wrong with them, or an empty fault. Nothing more may be taken after one.
    Fault take(std::string_view bytes, MessageReceiver& receiver);

    /// Whether nothing has come of a message that is not complete.
    bool isBetweenMessages() const {
        return stage_ == Stage::start && streamed_ == 0 && kept_.empty();
    }

private:
    /// What has to be there for the next step, from the beginning of a message.
    enum class Stage { start, header, message };

    bool passStreamed(std::string_view& bytes, MessageReceiver& receiver);
    std::string_view gather(std::string_view& bytes);
    void consume(std::string_view& bytes);
    Fault step(std::string_view there, std::string_view& bytes, MessageReceiver& receiver);
    Fault readHeader(std::string_view head, std::string_view& bytes, MessageReceiver& receiver);

    std::size_t longestHeader_;
    Stage stage_ = Stage::start;
    std::size_t wanted_ = frameStart; ///< how many bytes the stage needs
    std::size_t streamed_ = 0;        ///< how many bytes of a streamed body are still to come
    std::string kept_;                ///< the beginning of a message, from earlier pieces
};

} // namespace korvane::runner::bus
