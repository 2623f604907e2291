#include "korvane-runner/Bus/MessageHeader.h"

#include "Messages.h"
#include "Support/Expect.h"

using namespace korvane::runner::bus;
using namespace korvane::test;
using namespace std::string_literals;

namespace {

Checked<MessageHeader> read(const std::string& bytes) { return MessageHeader::read(bytes); }

/// Of a message that is known to be right.
MessageHeader headerOf(const std::string& bytes) {
    auto header = read(bytes);
    REQUIRE(header);
    return *header;
}

/// A call with another field in it.
std::string withField(int code, const std::string& type, const std::string& value) {
    return busCall("GetId").with(code, type, value).bytes();
}

RawMessage ofType(int type) {
    RawMessage message{.type = type};
    return message;
}

std::string faultOf(const std::string& bytes) {
    const auto header = read(bytes);
    return header ? "none" : std::string(header.fault());
}

} // namespace

TEST_CASE("the length of a message is told by its first 16 bytes, in either byte order") {
    for (const char order : {'l', 'B'}) {
        CAPTURE(order);
        const auto message =
            busCall("GetNameOwner", order).withBody("s", Bytes(order).text("org.a.b"));

        const auto frame = frameOf(message.bytes().substr(0, frameStart));

        REQUIRE(frame);
        CHECK(frame->header == message.header().size());
        CHECK(frame->body == message.body.size());
        CHECK(frame->length() == message.bytes().size());
    }
}

TEST_CASE("lengths that no message may have are refused before anything is reserved") {
    constexpr std::uint32_t mebibyte = 1024 * 1024;
    struct Row {
        std::uint32_t fields;
        std::uint32_t body;
        std::string fault;
    };
    const std::vector<Row> table{
        {64 * mebibyte, 64 * mebibyte - 16, ""},
        {64 * mebibyte, 64 * mebibyte - 15, "The message is longer than 128 MiB"},
        {64 * mebibyte + 1, 0, "An array is longer than 64 MiB"},
        {0xFFFF'FFFE, 0xFFFF'FFFE, "An array is longer than 64 MiB"},
        {0, 0xFFFF'FFFE, "The message is longer than 128 MiB"},
        {0, 128 * mebibyte - 16, ""},
    };
    for (const auto& row : table) {
        auto message = busCall("GetId");
        message.fieldsLength = row.fields;
        message.bodyLength = row.body;
        CAPTURE(row.fields);
        CAPTURE(row.body);

        CHECK(frameOf(message.bytes()).fault() == row.fault);
    }
}

TEST_CASE("every field of a header is read, in either byte order") {
    for (const char order : {'l', 'B'}) {
        CAPTURE(order);
        RawMessage message{.order = order, .type = 3, .flags = 5, .serial = 0x01020304};
        message.with(1, "/a/b").with(2, "a.b").with(3, "Member").with(4, "a.Error");
        message.withNumber(5, 0x0A0B0C0D).with(6, "a.c").with(7, ":1.9").withNumber(9, 3);
        const auto bytes = message.withBody("su", Bytes(order).text("x").number(1)).bytes();

        const auto header = read(bytes);

        REQUIRE(header);
        CHECK(header->order == static_cast<ByteOrder>(order));
        CHECK(header->type == MessageType::error);
        CHECK(header->flags == 5);
        CHECK(header->serial == 0x01020304);
        CHECK(header->bodyLength == message.body.size());
        CHECK(header->path == "/a/b");
        CHECK(header->interface == "a.b");
        CHECK(header->member == "Member");
        CHECK(header->errorName == "a.Error");
        CHECK(header->replySerial == 0x0A0B0C0D);
        CHECK(header->destination == "a.c");
        CHECK(header->sender == ":1.9");
        CHECK(header->signature == "su");
        CHECK(header->unixFds == 3);
        CHECK(header->destinationField ==
              std::string_view(Bytes(order).raw("\x06").signature("s").text("a.c").str()));
        CHECK(header->fieldsBefore.size() % 8 == 0);
        CHECK(header->fieldsBehind.starts_with('\x07'));
    }
}

TEST_CASE("what is not there is empty") {
    const auto header = read(ofType(2).withNumber(5, 1).bytes());

    REQUIRE(header);
    CHECK(header->path.empty());
    CHECK(header->destination.empty());
    CHECK(header->signature.empty());
    CHECK(header->unixFds == 0);
}

TEST_CASE("an answer is expected of calls alone, and where they want one") {
    auto call = busCall("GetId");
    CHECK(headerOf(call.bytes()).isReplyExpected());
    call.flags = noReplyExpected;
    CHECK_FALSE(headerOf(call.bytes()).isReplyExpected());
    CHECK_FALSE(headerOf(busSignal("NameLost", "a.b").bytes()).isReplyExpected());
}

TEST_CASE("what a bus lets pass is read") {
    const auto path = "/" + std::string(50'000, 'a');
    auto future = busCall("GetId");
    future.type = 5;
    auto flags = busCall("GetId");
    flags.flags = 0xF8;
    const std::vector<std::pair<std::string, std::string>> table{
        {"a type that is still to come", future.bytes()},
        {"flags that are still to come", flags.bytes()},
        {"a field that is still to come", withField(11, "s", "x")},
        {"one of those twice", busCall("GetId").with(200, "s", "x").with(200, "s", "y").bytes()},
        {"the last number of a field", withField(255, "y", "\7")},
        {"an array in a field", withField(11, "ay", "\0\0\0"s + Bytes().array("abc").str())},
        {"a variant in a field", withField(11, "v", "\1y\0\7"s)},
        {"arrays as deep as can be",
         withField(11, std::string(32, 'a') + "y", Bytes().number(0).str())},
        {"no interface", busCall("GetId").without(2).bytes()},
        {"no destination", busCall("GetId").without(6).bytes()},
        {"a root", busCall("GetId").with(1, "/").bytes()},
        {"a long path", busCall("GetId").with(1, path).bytes()},
        {"a sender of its own making", busCall("GetId").with(7, "org.x.y").bytes()},
        {"the serial of an answer in a call", busCall("GetId").withNumber(5, 5).bytes()},
        {"no descriptors", busCall("GetId").withNumber(9, 0).bytes()},
        {"a name without an element", busCall("GetId").with(6, ":").bytes()},
        {"hyphens in a name", busCall("GetId").with(6, "-a.b-c").bytes()},
        {"a signature without a type", busCall("GetId").with(8, "").bytes()},
        {"a noncharacter", withField(11, "s", "\uFFFE")},
    };
    for (const auto& row : table) {
        const auto& label = row.first;
        const auto& bytes = row.second;
        CAPTURE(label);
        CHECK(faultOf(bytes) == "none");
    }
}

TEST_CASE("what a bus ends the connection for is refused") {
    auto untyped = busCall("GetId");
    untyped.type = 0;
    auto version0 = busCall("GetId");
    version0.version = 0;
    auto version2 = busCall("GetId");
    version2.version = 2;
    auto unnumbered = busCall("GetId");
    unnumbered.serial = 0;
    auto padded = busCall("GetIdx");
    padded.padding = '\1';
    auto long1 = busCall("GetId");
    long1.fieldsLength = 200;
    auto bodyAlone = busCall("GetId");
    bodyAlone.body = "\0\0\0\0"s;
    auto between = busCall("GetId").bytes();
    between[16 + 8 + 22] = '\1'; // behind the path
    const std::string name = "A name in the header is not valid";
    const std::string missing = "A field that the type of message needs is missing";
    const std::string type = "A field of the header has a wrong type";
    const std::string kept = "The path or the interface is kept for libraries";

    const std::vector<std::pair<std::string, std::string>> table{
        {"x" + busCall("GetId").bytes().substr(1), "The byte order is none"},
        {untyped.bytes(), "The type of message is 0"},
        {version0.bytes(), "The version of the protocol is not 1"},
        {version2.bytes(), "The version of the protocol is not 1"},
        {unnumbered.bytes(), "The serial is 0"},
        {busCall("GetId").bytes().substr(0, 15), "The message is cut off"},
        {busCall("GetId").bytes().substr(0, 40), "The message is cut off"},
        {padded.bytes(), "Padding is not zero"},
        {between, "Padding is not zero"},
        {long1.bytes(), "The message is cut off"},
        {bodyAlone.bytes(), "There is a body without a signature"},
        {withField(0, "s", "x"), "A field of the header has the number 0"},
        {withField(11, "s", "\xFF"), "A text is not UTF-8"},
        {withField(11, "s", "\xED\xA0\x80"), "A text is not UTF-8"},
        {withField(11, "s", "a\0b"s), "A text has a zero byte in it"},
        {withField(11, "b", Bytes().number(2).str()), "A boolean is neither 0 nor 1"},
        {withField(11, "ss", Bytes().number(0).str()), "A variant is not of one type"},
        {withField(11, "", ""), "A variant is not of one type"},
        {withField(11, std::string(33, 'a') + "y", ""), "A signature is not valid"},
        {withField(11, "au", "\0\0\0"s + Bytes().array("abc").str()),
         "A value ends behind the message"},
        {withField(11, "ay", "\0\0\0"s + Bytes().number(9).str()),
         "An array ends behind the message"},
        {busCall("GetId").with(6, "s", "a.b").bytes(), "A field of the header is there twice"},
        {busCall("GetId").without(1).bytes(), missing},
        {busCall("GetId").without(3).bytes(), missing},
        {busCall("GetId").without(1).with(1, "s", "/").bytes(), type},
        {busCall("GetId").without(2).with(2, "o", "/a").bytes(), type},
        {withField(8, "s", "s"), type},
        {withField(9, "s", "s"), type},
        {withField(8, "g", "("), "A signature is not valid"},
        {busCall("GetId").with(1, "/org/freedesktop/DBus/Local").bytes(), kept},
        {busCall("GetId").with(2, "org.freedesktop.DBus.Local").bytes(), kept},
        {busCall("GetId").with(1, "/a/").bytes(), "A path is not one of an object"},
        {busCall("GetId").with(1, "").bytes(), "A path is not one of an object"},
        {busCall("GetId").with(2, "a").bytes(), name},
        {busCall("a.b").bytes(), name},
        {busCall("GetId").with(6, "a").bytes(), name},
        {busCall("GetId").with(6, "").bytes(), name},
        {busCall("GetId").with(7, "x").bytes(), name},
        {busCall("GetId").withNumber(5, 0).bytes(), "The serial of what is answered is 0"},
        {ofType(2).with(6, ":1.5").bytes(), missing},
        {ofType(3).withNumber(5, 3).bytes(), missing},
        {ofType(3).with(4, "a.b").bytes(), missing},
        {ofType(3).withNumber(5, 3).with(4, "x").bytes(), name},
        {ofType(4).with(1, "/").with(3, "X").bytes(), missing},
        {ofType(4).with(2, "a.b").with(3, "X").bytes(), missing},
        {ofType(4).with(1, "/").with(2, "a.b").bytes(), missing},
    };
    for (std::size_t row = 0; row < table.size(); ++row) {
        CAPTURE(row);
        CHECK(faultOf(table[row].first) == table[row].second);
    }
}

TEST_CASE("values that are nested without an end are refused") {
    const auto variants = [](std::size_t depth) {
        std::string value;
        for (std::size_t i = 0; i < depth; ++i) value += "\1v\0"s;
        return value + "\1y\0\7"s;
    };
    CHECK(faultOf(withField(11, "v", variants(62))) == "none");
    CHECK(faultOf(withField(11, "v", variants(63))) == "Values are nested too deep");
    CHECK(faultOf(withField(11, "v", variants(15'000))) == "Values are nested too deep");
}

TEST_CASE("a header that is written again without a change is the same") {
    auto texts = recordedMessages;
    REQUIRE(texts.size() == 9);
    for (const char order : {'l', 'B'}) {
        texts.push_back(callTo("org.a.b", order)
                            .with(11, "ay", "\0\0\0"s + Bytes(order).array("abc").str())
                            .bytes());
        texts.push_back(callTo(":1.4", order).with(200, "s", "x").with(8, "g", "").bytes());
    }
    for (const auto& bytes : texts) {
        CAPTURE(bytes);
        const auto header = read(bytes);

        REQUIRE(header);
        CHECK(header->rebuilt({}) == bytes.substr(0, bytes.size() - header->bodyLength));
    }
}

TEST_CASE("of a header with another destination everything else stays, whatever the lengths") {
    for (const char order : {'l', 'B'}) {
        for (std::size_t length = 0; length < 16; ++length) {
            const auto other = "org.a.b" + std::string(length, 'c');
            auto message =
                callTo("org.x", order).with(11, "ay", "\0\0\0"s + Bytes(order).array("abc").str());
            message.with(8, "s").withNumber(9, 2).body = Bytes(order).text("body").str();
            message.flags = 6;
            const auto bytes = message.bytes();

            const auto rebuilt = headerOf(bytes).rebuilt({.destination = other});

            CAPTURE(other);
            CHECK(rebuilt == message.with(6, other).header());
            CHECK(rebuilt.size() % 8 == 0);
        }
    }
}

TEST_CASE("serial, flags and the length of the body are changed where they are meant") {
    for (const char order : {'l', 'B'}) {
        auto message = callTo("org.x.y", order);
        const auto bytes = message.bytes();

        const auto rebuilt =
            headerOf(bytes).rebuilt({.serial = 0xFFFF'FFFF, .flags = 3, .bodyLength = 0x01020304});

        message.serial = 0xFFFF'FFFF;
        message.flags = 3;
        message.bodyLength = 0x01020304;
        CHECK(rebuilt == message.header());
    }
}

TEST_CASE("a destination is changed and never added") {
    const auto message = callTo("org.x.y").without(6);
    const auto bytes = message.bytes();

    CHECK(headerOf(bytes).rebuilt({.destination = "org.a.b"}) == message.header());
}
