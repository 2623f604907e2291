#include "korvane-runner/Bus/Handshake.h"

#include "Support/Expect.h"

using namespace korvane::runner::bus;
using namespace korvane::test;
using namespace std::string_literals;

namespace {

/// What of `text` belongs to the handshake, when it comes in pieces of `size` bytes. The end is
/// found with the last of them; "unfinished" when it is not.
template <class Handshake> std::string takenOf(const std::string& text, std::size_t size) {
    Handshake handshake;
    std::string all;
    for (std::size_t at = 0; at < text.size(); at += size) {
        const auto piece = text.substr(at, size);
        const auto taken = handshake.take(piece);
        if (!taken) return std::string(taken.fault());
        all += piece.substr(0, *taken);
        if (handshake.isOver()) return all;
        if (*taken != piece.size()) return "stopped before its end";
    }
    return "unfinished";
}

template <class Handshake> void checkTaken(const std::string& text, const std::string& expected) {
    CAPTURE(text);
    for (const std::size_t size : {std::size_t{1}, std::size_t{2}, std::size_t{7}, text.size()}) {
        CAPTURE(size);
        CHECK(takenOf<Handshake>(text, size) == expected);
    }
}

void checkClient(const std::string& handshake, const std::string& behind) {
    checkTaken<ClientHandshake>(handshake + behind, handshake);
}

const std::string authentication = "\0AUTH EXTERNAL 30\r\n"s;
const std::string message = "l\1\0\1"s;

} // namespace

TEST_CASE("messages of a program begin behind the line BEGIN, however it is written") {
    checkClient(authentication + "BEGIN\r\n", message);
    checkClient(authentication + "NEGOTIATE_UNIX_FD\r\nBEGIN\r\n", message);
    checkClient("\0AUTH\r\nAUTH EXTERNAL\r\nDATA\r\nNEGOTIATE_UNIX_FD\r\nBEGIN\r\n"s, message);
    checkClient(authentication + "BEGIN x\r\n", message);
    checkClient(authentication + "BEGIN \r\n", message);
    checkClient(authentication + "BEGIN\tx\r\n", message);
    checkClient(authentication + "\r\nBEGIN\r\n", message);
    checkClient("\0BEGIN\r\n"s, message);
    checkClient(authentication + "BEGIN\r\n", "");
    checkClient(authentication + "BEGIN\r\n", "\r\nBEGIN\r\n");
}

TEST_CASE("lines that only look like it are words like others") {
    for (const auto& line : {"DATA BEGIN\r\n"s, "begin\r\n"s, " BEGIN\r\n"s, "BEGINx\r\n"s,
                             "BEGIN\n\r\n"s, "BEGIN\r\r\n"s, "BEGIN\0\r\n"s, "BEGIN \0\r\n"s,
                             "BEGIN \xFF\r\n"s, "A\rBEGIN\r\n"s, "A\nBEGIN\r\n"s, "X\xFF\r\n"s}) {
        checkClient(authentication + line + "BEGIN\r\n", message);
        checkTaken<ClientHandshake>(authentication + line, "unfinished");
    }
}

TEST_CASE("a program that does not begin with a zero byte is refused as the bus refuses it") {
    checkTaken<ClientHandshake>("AUTH EXTERNAL 30\r\n",
                                "The handshake does not begin with a zero byte");
}

TEST_CASE("a line is not kept without an end") {
    const auto fault = "A line of the handshake does not end"s;
    checkTaken<ClientHandshake>("\0"s + std::string(17'000, 'A'), fault);
    checkTaken<BusHandshake>(std::string(17'000, 'A'), fault);
    checkTaken<ClientHandshake>("\0"s + std::string(16'000, 'A') + "\r\nBEGIN\r\n",
                                "\0"s + std::string(16'000, 'A') + "\r\nBEGIN\r\n");
}

TEST_CASE("messages of the bus begin with the first line that has their letter in front") {
    const auto check = [](const std::string& handshake, const std::string& behind) {
        CAPTURE(handshake);
        for (const std::size_t size : {std::size_t{1}, std::size_t{3}, std::size_t{1'000}}) {
            CHECK(takenOf<BusHandshake>(handshake + behind, size) == handshake);
        }
    };
    for (const auto& behind : {message, "B\1\0\1"s}) {
        check("OK d2d3b82304194b5a9fc797e46b02a62a\r\n", behind);
        check("DATA\r\nOK d2d3\r\nAGREE_UNIX_FD\r\n", behind);
        check("REJECTED EXTERNAL\r\nERROR \"l\"\r\nOK Bl\r\n", behind);
    }
}

TEST_CASE("a bus that has said no message yet has not ended its handshake") {
    checkTaken<BusHandshake>("OK d2d3\r\nAGREE_UNIX_FD\r\n", "unfinished");
}
