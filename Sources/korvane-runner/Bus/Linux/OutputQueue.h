#pragma once

#include "Ambrel/Platform/OwnedFd.h"

#include <cstddef>
#include <list>
#include <string>
#include <string_view>
#include <vector>

namespace korvane::runner::bus {

using Descriptors = std::vector<ambrel::OwnedFd>;

/// As many as one write takes, and so a message can have.
inline constexpr std::size_t mostDescriptors = 253;

/// What is still to be written to a socket: messages with their descriptors, in their order.
class OutputQueue {
public:
    /// Whether more of the same message follows.
    enum class Message { ends, goesOn };

    /// The next bytes of what the other side sends. Descriptors come with the first of a message.
    void push(std::string_view bytes, Descriptors descriptors = {},
              Message message = Message::ends);

    /// A whole message that the other side does not send just now. One that goes on ends before.
    void insert(std::string bytes, Descriptors descriptors = {});

    enum class Written {
        all,
        some,  ///< the socket takes no more for now
        later, ///< as many descriptors are on their way as may be, which no socket tells the end of
        failed, ///< the other side is not there any more
    };
    /// Writes as much as the socket takes.
    Written writeTo(int socket);

    /// Drops everything, what comes later as well.
    void close();

    bool isEmpty() const { return chunks_.empty(); }
    /// How much memory it stands for, in bytes; a descriptor counts for many.
    std::size_t load() const;
    /// How much was inserted since the queue was empty the last time.
    std::size_t inserted() const { return inserted_; }

private:
    struct Chunk {
        std::string bytes;
        std::size_t written = 0;
        Descriptors descriptors{}; ///< go with the first of the bytes
    };

    void append(std::string_view bytes, Descriptors descriptors);
    void flushWaiting();
    Written writeNext(int socket);
    void drop(std::size_t written);

    std::list<Chunk> chunks_;  // an empty one takes no memory of its own
    std::list<Chunk> waiting_; ///< inserted while a message goes on
    bool goesOn_ = false;
    bool isClosed_ = false;
    std::size_t bytes_ = 0;
    std::size_t descriptors_ = 0;
    std::size_t inserted_ = 0;
};

} // namespace korvane::runner::bus
