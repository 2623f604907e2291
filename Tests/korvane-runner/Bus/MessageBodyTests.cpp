#include "korvane-runner/Bus/MessageBody.h"

#include "Messages.h"
#include "Support/Expect.h"

using namespace korvane::runner::bus;
using namespace korvane::test;
using namespace std::string_literals;

namespace {

using Values = std::vector<BodyValue>;

struct Row {
    std::string signature;
    Values values;
    Bytes bytes;
};

/// Each of the bodies that are rewritten.
std::vector<Row> rows(char order) {
    const auto list = Bytes(order).text("a").text("").text("bcd");
    const auto pairs = Bytes(order).text("A").text("1").pad(8).text("B").text("");
    return {
        {"", {}, Bytes(order)},
        {"u", {7U}, Bytes(order).number(7)},
        {"s", {"org.a.b"s}, Bytes(order).text("org.a.b")},
        {"s", {"\u00E4"s}, Bytes(order).text("\u00E4")},
        {"su", {"org.a"s, 4U}, Bytes(order).text("org.a").number(4)},
        {"sss", {"a"s, ""s, ":1.5"s}, Bytes(order).text("a").text("").text(":1.5")},
        {"as", {TextList{}}, Bytes(order).number(0)},
        {"as", {TextList{"a", "", "bcd"}}, Bytes(order).array(list.str())},
        {"asu", {TextList{"a", "", "bcd"}, 1U}, Bytes(order).array(list.str()).number(1)},
        {"a{ss}", {TextPairs{}}, Bytes(order).number(0).pad(8)},
        {"a{ss}", {TextPairs{{"A", "1"}, {"B", ""}}}, Bytes(order).array(pairs.str(), 8)},
    };
}

} // namespace

TEST_CASE("bodies are read and written in either byte order") {
    for (const char order : {'l', 'B'}) {
        for (const auto& row : rows(order)) {
            CAPTURE(order);
            CAPTURE(row.signature);
            const auto byteOrder = static_cast<ByteOrder>(order);

            CHECK((tryReadBody(byteOrder, row.signature, row.bytes.str()) == row.values));
            CHECK(writtenBody(byteOrder, row.values) == row.bytes.str());
        }
    }
}

TEST_CASE("a body that is not what its signature says is left alone") {
    for (const char order : {'l', 'B'}) {
        for (const auto& row : rows(order)) {
            CAPTURE(row.signature);
            const auto byteOrder = static_cast<ByteOrder>(order);
            const auto& bytes = row.bytes.str();

            CHECK_FALSE(tryReadBody(byteOrder, row.signature, bytes + "\0"s));
            for (std::size_t length = 0; length < bytes.size(); ++length) {
                CHECK_FALSE(tryReadBody(byteOrder, row.signature, bytes.substr(0, length)));
            }
        }
    }
}

TEST_CASE("bodies that are not right are left alone") {
    const std::vector<std::pair<std::string, std::string>> table{
        {"s", Bytes().text("\xFF").str()},
        {"s", Bytes().text("a\0b"s).str()},
        {"s", Bytes().number(0xFFFF'FFFF).raw("a").str()},
        {"s", Bytes().number(1).raw("ab").str()},
        {"su", Bytes().text("abcd").raw("\1\0\0"s).number(4).str()},
        {"as", Bytes().number(0x7FFF'FFFF).text("a").str()},
        {"as", Bytes().number(5).text("a").text("b").str()},
        {"a{ss}", Bytes().array(Bytes().text("A").str(), 8).str()},
        {"v", "\1s\0\0\1\0\0\0a\0"s},
        {"i", Bytes().number(7).str()},
        {"aas", Bytes().number(0).str()},
        {"(", ""},
    };
    for (std::size_t row = 0; row < table.size(); ++row) {
        CAPTURE(row);
        CHECK_FALSE(tryReadBody(ByteOrder::little, table[row].first, table[row].second));
    }
}

TEST_CASE("one number of a dictionary is exchanged, and nothing else") {
    for (const char order : {'l', 'B'}) {
        CAPTURE(order);
        const auto credentials = [order](std::uint32_t process) {
            Bytes entries(order);
            entries.text("UnixUserID").signature("u").number(1000);
            entries.pad(8).text("ProcessID").signature("u").number(process);
            entries.pad(8).text("UnixGroupIDs").signature("au").number(4).number(1000);
            return Bytes(order).array(entries.str(), 8).str();
        };
        const auto byteOrder = static_cast<ByteOrder>(order);

        CHECK(tryExchangeNumber(byteOrder, credentials(11), "ProcessID", 0x01020304) ==
              credentials(0x01020304));
        CHECK(tryExchangeNumber(byteOrder, credentials(11), "LinuxSecurityLabel", 1) ==
              std::nullopt);
        CHECK(tryExchangeNumber(byteOrder, credentials(11), "UnixGroupIDs", 1) == std::nullopt);
        for (std::size_t length = 0; length < credentials(11).size(); ++length) {
            const auto cut = credentials(11).substr(0, length);
            CHECK(tryExchangeNumber(byteOrder, cut, "ProcessID", 1) == std::nullopt);
        }
    }
}

TEST_CASE("one entry of a dictionary is left out, wherever it stands, and nothing else") {
    for (const char order : {'l', 'B'}) {
        const auto byteOrder = static_cast<ByteOrder>(order);
        const auto dictionary = [order](const std::vector<std::string>& keys) {
            Bytes entries(order);
            for (const auto& key : keys) {
                entries.pad(8).text(key).signature("v").signature("h").number(3);
                if (key == "c") entries.raw("\1");
            }
            return Bytes(order).array(entries.str(), 8).str();
        };
        const auto all = dictionary({"a", "bcd", "e"});

        CHECK(tryLeaveOut(byteOrder, all, "a") == dictionary({"bcd", "e"}));
        CHECK(tryLeaveOut(byteOrder, all, "bcd") == dictionary({"a", "e"}));
        CHECK(tryLeaveOut(byteOrder, all, "e") == dictionary({"a", "bcd"}));
        CHECK(tryLeaveOut(byteOrder, dictionary({"a"}), "a") == dictionary({}));
        CHECK(tryLeaveOut(byteOrder, all, "b") == std::nullopt);
        CHECK(tryLeaveOut(byteOrder, dictionary({"a", "c"}), "a") == std::nullopt);
        for (std::size_t length = 0; length < all.size(); ++length) {
            CHECK(tryLeaveOut(byteOrder, all.substr(0, length), "a") == std::nullopt);
        }
    }
}

TEST_CASE("what the bus tells of a program is read as it was recorded") {
    const auto& answer = recordedMessages[5];
    const auto body = answer.substr(answer.size() - 0x58);

    const auto exchanged = tryExchangeNumber(ByteOrder::little, body, "ProcessID", 0x640E);

    REQUIRE(exchanged);
    auto expected = body;
    expected[expected.find("\x0D\x64")] = '\x0E';
    CHECK(*exchanged == expected);
}
