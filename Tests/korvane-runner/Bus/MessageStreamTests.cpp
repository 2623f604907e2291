#include "korvane-runner/Bus/MessageStream.h"

#include "Messages.h"

#include <doctest/doctest.h>

namespace korvane::test {

using namespace korvane::runner::bus;

namespace {

/// Writes down what it is told; members that begin with "Collect" are collected.
class Recorder final : public MessageReceiver {
public:
    Checked<Body> beginMessage(const MessageHeader& header, std::string_view head) override {
        told += "begin " + std::string(header.member) + " " + std::to_string(head.size()) + "\n";
        if (header.member == "Refused") return Fault{"refused"};
        bytes += head;
        return header.member.starts_with("Collect") ? Body::collected : Body::streamed;
    }
    Fault message(const MessageHeader& header, std::string_view whole) override {
        told += "message " + std::string(header.member) + " " + std::to_string(whole.size()) + "\n";
        bytes += whole.substr(whole.size() - header.bodyLength);
        return header.member == "CollectedAndRefused" ? Fault{"refused"} : Fault{};
    }
    void bodyPart(std::string_view part, Part kind) override {
        CHECK_FALSE(part.empty());
        bytes += part;
        body += part.size();
        if (kind == Part::last) told += "end of " + std::to_string(std::exchange(body, 0)) + "\n";
    }

    std::string told;
    std::string bytes; ///< all that it got
    std::size_t body = 0;
};

std::string call(const std::string& member, std::size_t body, char order = 'l') {
    auto message = callTo("org.example.Editor", order).with(3, member);
    if (body > 0) message.withBody("ay", Bytes(order).array(std::string(body - 4, 'x')));
    return message.bytes();
}

std::string manyMessages() {
    return call("Streamed", 100) + call("Empty", 0) + call("CollectedBig", 3000, 'B') +
           call("CollectedEmpty", 0, 'B') + call("StreamedBig", 5000, 'B') + call("Collected", 8);
}

} // namespace

TEST_CASE("messages are collected or streamed as is wanted") {
    Recorder recorder;
    MessageStream stream;

    const auto fault = stream.take(manyMessages(), recorder);

    CHECK(fault == Fault{});
    CHECK(recorder.told == "begin Streamed 128\nend of 100\n"
                           "begin Empty 112\nmessage Empty 112\n"
                           "begin CollectedBig 128\nmessage CollectedBig 3128\n"
                           "begin CollectedEmpty 120\nmessage CollectedEmpty 120\n"
                           "begin StreamedBig 128\nend of 5000\n"
                           "begin Collected 128\nmessage Collected 136\n");
    CHECK(recorder.bytes == manyMessages());
    CHECK(stream.isBetweenMessages());
}

TEST_CASE("however a stream is cut in two, its messages are the same") {
    const auto bytes = manyMessages();
    Recorder whole;
    MessageStream().take(bytes, whole);

    for (std::size_t cut = 0; cut <= bytes.size(); ++cut) {
        CAPTURE(cut);
        Recorder recorder;
        MessageStream stream;
        REQUIRE(stream.take(bytes.substr(0, cut), recorder) == Fault{});
        REQUIRE(stream.take(bytes.substr(cut), recorder) == Fault{});

        REQUIRE(recorder.told == whole.told);
        REQUIRE(recorder.bytes == bytes);
        REQUIRE(stream.isBetweenMessages());
    }
}

TEST_CASE("messages that come in pieces of any size are the same") {
    const auto bytes = manyMessages();
    Recorder whole;
    MessageStream().take(bytes, whole);

    for (const std::size_t size : {1U, 2U, 7U, 16U, 17U, 128U, 1000U}) {
        CAPTURE(size);
        Recorder recorder;
        MessageStream stream;
        for (std::size_t i = 0; i < bytes.size(); i += size) {
            REQUIRE(stream.take(bytes.substr(i, size), recorder) == Fault{});
        }

        CHECK(recorder.told == whole.told);
        CHECK(recorder.bytes == bytes);
    }
}

TEST_CASE("a stream is between messages only where none has begun") {
    const auto streamed = call("Streamed", 100);
    const auto collected = call("Collected", 100);
    for (const auto& bytes : {streamed, collected}) {
        for (std::size_t cut = 0; cut <= bytes.size(); ++cut) {
            CAPTURE(cut);
            Recorder recorder;
            MessageStream stream;
            stream.take(bytes.substr(0, cut), recorder);

            CHECK(stream.isBetweenMessages() == (cut == 0 || cut == bytes.size()));
        }
    }
}

TEST_CASE("a streamed body is told of before all of it has come") {
    const auto bytes = call("Streamed", 1000);
    Recorder recorder;
    MessageStream stream;

    stream.take(bytes.substr(0, 528), recorder);

    CHECK(recorder.told == "begin Streamed 128\n");
    CHECK(recorder.body == 400);
}

TEST_CASE("a message that may not be ends its stream before anything of it is kept") {
    auto longHeader = callTo("org.example.Editor");
    longHeader.with(20, "s", std::string(70'000, 'x'));
    auto longBody = callTo("org.example.Editor");
    longBody.bodyLength = 0x0800'0000;
    auto noSerial = callTo("org.example.Editor");
    noSerial.serial = 0;
    const auto faultOf = [](const std::string& bytes) {
        Recorder recorder;
        const auto fault = MessageStream().take(call("Empty", 0) + bytes, recorder);
        CHECK(recorder.told == "begin Empty 112\nmessage Empty 112\n");
        return fault.sentence;
    };

    CHECK(faultOf(longHeader.bytes().substr(0, 16)) == "The header is too long");
    CHECK(faultOf(longBody.bytes().substr(0, 16)) == "The message is longer than 128 MiB");
    CHECK(faultOf(noSerial.bytes().substr(0, 16)) == "The serial is 0");
    CHECK(faultOf(callTo("org..example").bytes()) == "A name in the header is not valid");
    CHECK(faultOf("x" + std::string(15, '\0')) == "The byte order is none");
}

TEST_CASE("a header may be as long as its stream lets it") {
    constexpr std::uint32_t start = 16;
    auto message = busCall("GetId");
    for (const std::size_t longest : {longestOwnHeader, longestMessage / 2}) {
        CAPTURE(longest);
        const auto faultAt = [&](std::size_t length) {
            Recorder recorder;
            message.fieldsLength = static_cast<std::uint32_t>(length) - start;
            MessageStream stream(longest);
            return stream.take(message.bytes().substr(0, start), recorder).sentence;
        };

        CHECK(faultAt(longest).empty());
        CHECK(faultAt(longest + 1) == "The header is too long");
    }
}

TEST_CASE("a fault of whoever is told ends a stream") {
    for (const auto* member : {"Refused", "CollectedAndRefused"}) {
        for (const std::size_t body : {0U, 12U}) {
            CAPTURE(member);
            Recorder recorder;
            const auto fault =
                MessageStream().take(call(member, body) + call("Empty", 0), recorder);

            CHECK(fault.sentence == "refused");
            CHECK(recorder.told.find("Empty") == std::string::npos);
        }
    }
}

} // namespace korvane::test
