#include "Ambrel/Platform/PropertyList.h"

#include "Ambrel/Base/CodingError.h"
#include "Ambrel/Platform/LibraryError.h"
#include "BinaryPlist.h"
#include "Support/Builders.h"
#include "Support/Expect.h"
#include "Support/TempDir.h"

#include <limits>
#include <unistd.h>

using namespace ambrel;
using namespace korvane::test;

namespace {

using Dictionary = PropertyListDictionary;

std::optional<PropertyListValue> xmlValue(const std::string& xml) {
    return valueOf(xmlPlist("<key>K</key>" + xml));
}

Dictionary roundTrip(const Dictionary& dictionary) {
    const auto read = parsePropertyList(xmlPropertyList(dictionary));
    REQUIRE(read.has_value());
    return *read;
}

std::string utf16Bytes(const std::u16string& text, bool isBigEndian) {
    std::string bytes;
    for (const auto unit : text) {
        const auto high = static_cast<char>(static_cast<unsigned char>(unit >> 8));
        const auto low = static_cast<char>(static_cast<unsigned char>(unit & 0xFF));
        bytes += isBigEndian ? high : low;
        bytes += isBigEndian ? low : high;
    }
    return bytes;
}

} // namespace

TEST_CASE("an XML property list is read with all types that the system uses") {
    const auto dictionary = parsePropertyList(xmlPlist(
        "<key>s</key><string>a &amp; &lt;b&gt;</string><key>t</key><true/><key>f</key><false/>"
        "<key>i</key><integer>12</integer><key>n</key><integer>-7</integer>"
        "<key>r</key><real>0.5</real><key>e</key><string></string>"
        "<key>a</key><array><string>x</string><array/></array>"
        "<key>d</key><dict><key>k</key><string>v</string></dict>"
        "<key>date</key><date>2020-01-01T00:00:00Z</date><key>data</key><data>AAEC</data>"));

    REQUIRE(dictionary.has_value());
    const Dictionary expected{
        {"s", {std::string("a & <b>")}},
        {"t", {true}},
        {"f", {false}},
        {"i", {std::int64_t{12}}},
        {"n", {std::int64_t{-7}}},
        {"r", {0.5}},
        {"e", {std::string()}},
        {"a", {PropertyListArray{{std::string("x")}, {PropertyListArray{}}}}},
        {"d", {Dictionary{{"k", {std::string("v")}}}}},
        {"date", {}},
        {"data", {}},
    };
    CHECK((*dictionary == expected));
}

TEST_CASE("a binary property list is read with all types that the system uses") {
    BinaryPlist plist;
    const auto shared = plist.text("v");
    const auto root = plist.dictionary({
        {plist.text("s"), shared},
        {plist.text("again"), shared},
        {plist.text("u"), plist.add("\x62" + std::string("\x00\xe9\x4e\x2d", 4))},
        {plist.text("t"), plist.add("\x09")},
        {plist.text("f"), plist.add("\x08")},
        {plist.text("i"), plist.add(std::string("\x10\x0c", 2))},
        {plist.text("n"), plist.add("\x13" + bigEndian(static_cast<std::uint64_t>(-7), 8))},
        {plist.text("r"), plist.add("\x23" + bigEndian(0x3FE0000000000000ULL, 8))},
        {plist.text("a"), plist.array({shared, shared})},
        {plist.text("d"), plist.dictionary({{shared, shared}})},
    });

    const auto dictionary = parsePropertyList(plist.file(root));

    REQUIRE(dictionary.has_value());
    const PropertyListValue v{std::string("v")};
    const Dictionary expected{
        {"s", v},
        {"again", v},
        {"u", {std::string("\xc3\xa9\xe4\xb8\xad")}},
        {"t", {true}},
        {"f", {false}},
        {"i", {std::int64_t{12}}},
        {"n", {std::int64_t{-7}}},
        {"r", {0.5}},
        {"a", {PropertyListArray{v, v}}},
        {"d", {Dictionary{{"v", v}}}},
    };
    CHECK((*dictionary == expected));
}

TEST_CASE("a byte order mark before an XML property list is dropped") {
    const auto dictionary =
        parsePropertyList("\xef\xbb\xbf" + xmlPlist("<key>K</key><string>v</string>"));

    REQUIRE(dictionary.has_value());
    CHECK(*dictionary->at("K").string() == "v");
}

TEST_CASE("Booleans are true, false and the numbers that are exactly 0 or 1") {
    struct Row {
        std::string xml;
        std::optional<bool> value;
    };
    const std::vector<Row> table{
        {"<true/>", true},
        {"<false/>", false},
        {"<integer>1</integer>", true},
        {"<integer>0</integer>", false},
        {"<real>1.0</real>", true},
        {"<real>0.0</real>", false},
        {"<integer>2</integer>", {}},
        {"<integer>-1</integer>", {}},
        {"<real>0.5</real>", {}},
        {"<real>1.0000001</real>", {}},
        {"<string>YES</string>", {}},
        {"<string>true</string>", {}},
        {"<string>1</string>", {}},
        {"<string></string>", {}},
        {"<array><true/></array>", {}},
        {"<dict/>", {}},
        {"<date>2001-01-01T00:00:00Z</date>", {}},
        {"<data>AQ==</data>", {}},
    };
    for (const auto& row : table) {
        CAPTURE(row.xml);
        const auto value = xmlValue(row.xml);
        REQUIRE(value.has_value());
        CHECK(value->exactBoolean() == row.value);
    }
    CHECK(valueOf(binaryWith("K", std::string("\x10\x01", 2)))->exactBoolean() == true);
    CHECK(valueOf(binaryWith("K", "\x23" + bigEndian(0x3FF0000000000000ULL, 8)))->exactBoolean() ==
          true);
    CHECK_FALSE(valueOf(binaryWith("K", "\x23" + bigEndian(0x7FF8000000000000ULL, 8)))
                    ->exactBoolean()
                    .has_value()); // not a number
}

TEST_CASE("a root that is no dictionary makes the list unreadable") {
    for (const auto* root : {"<array><string>x</string></array>", "<string>x</string>", "<true/>",
                             "<integer>1</integer>", ""}) {
        CAPTURE(root);
        CHECK_FALSE(
            parsePropertyList(std::string("<?xml version=\"1.0\"?><plist version=\"1.0\">") + root +
                              "</plist>")
                .has_value());
    }
    BinaryPlist plist;
    const auto text = plist.text("x");
    CHECK_FALSE(parsePropertyList(plist.file(text)).has_value());
    CHECK_FALSE(parsePropertyList(plist.file(plist.array({text}))).has_value());
}

TEST_CASE("what is no property list is unreadable") {
    for (const std::string& bytes :
         {std::string(), std::string("x"), std::string("{ CFBundleIdentifier = \"a\"; }"),
          std::string("{\"CFBundleIdentifier\":\"a\"}"), std::string("bplist"),
          std::string("bplist00"), std::string("bplist00") + std::string(32, '\0'),
          std::string("bplist00") + std::string(32, '\xff'), std::string(1000, '\0'),
          std::string("<"), std::string("<plist>"), std::string("<html><dict/></html>"),
          std::string("\xff\xfe<\0p\0", 6)}) {
        CAPTURE(bytes.substr(0, 40));
        CHECK_FALSE(parsePropertyList(bytes).has_value());
    }
}

TEST_CASE("a file that is missing, a folder or empty is unreadable") {
    const TempDir tmp;
    makeFolder(tmp / "folder");
    writeFile(tmp / "empty");
    writeFile(tmp / "good", xmlPlist(""));

    CHECK_FALSE(readPropertyList(tmp / "missing").has_value());
    CHECK_FALSE(readPropertyList(tmp / "folder").has_value());
    CHECK_FALSE(readPropertyList(tmp / "empty").has_value());
    CHECK_FALSE(readPropertyList((tmp / "good") + std::string("\0", 1)).has_value());
    CHECK(readPropertyList(tmp / "good").has_value());
}

TEST_CASE("an empty key is read and written") {
    const auto read = parsePropertyList(xmlPlist("<key></key><string>x</string>"));
    REQUIRE(read.has_value());
    CHECK(*read->at("").string() == "x");
    const Dictionary dictionary{{"", {std::string("x")}}};
    CHECK((roundTrip(dictionary) == dictionary));
}

TEST_CASE("hostile strings survive being written and read") {
    Dictionary dictionary;
    for (const std::string& text :
         {std::string(), std::string("&<>\"']]>"), std::string("<![CDATA[x]]>"),
          std::string("&amp;lt;"), std::string("line\nbreak\ttab"), std::string("  blanks  "),
          std::string("\xf0\x9f\x98\x80 caf\xc3\xa9 \xe2\x80\xae"), std::string("</string>"),
          std::string("<!-- -->"), std::string("\xef\xbf\xbd"), std::string("\xc2\x85"),
          std::string("\xf0\x9f\xbf\xbf"), std::string("\x7f"), std::string(100000, '&')}) {
        dictionary["value " + std::to_string(dictionary.size())] = {text};
        dictionary["key " + text] = {true};
    }
    CHECK((roundTrip(dictionary) == dictionary));
}

TEST_CASE("numbers, Booleans and nested values survive being written and read") {
    const Dictionary dictionary{
        {"min", {std::numeric_limits<std::int64_t>::min()}},
        {"max", {std::numeric_limits<std::int64_t>::max()}},
        {"negative", {std::int64_t{-3}}},
        {"zero", {std::int64_t{0}}},
        {"one", {std::int64_t{1}}},
        {"true", {true}},
        {"false", {false}},
        {"real", {-1.5}},
        {"list", {PropertyListArray{{std::string("a")}, {true}, {PropertyListArray{}}}}},
        {"map", {Dictionary{{"k", {Dictionary{}}}}}},
    };
    CHECK((roundTrip(dictionary) == dictionary));
}

TEST_CASE("the written text is a standard XML document with signed integers") {
    const auto text = xmlPropertyList({
        {"n", {std::int64_t{-3}}},
        {"min", {std::numeric_limits<std::int64_t>::min()}},
        {"yes", {true}},
        {"no", {false}},
    });

    CHECK(beginsWith(text, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!DOCTYPE plist PUBLIC "
                           "\"-//Apple//DTD PLIST 1.0//EN\" "));
    CHECK(contains(text, "<plist version=\"1.0\">"));
    CHECK(contains(text, "<integer>-3</integer>"));
    CHECK(contains(text, "<integer>-9223372036854775808</integer>"));
    CHECK(contains(text, "<true/>"));
    CHECK(contains(text, "<false/>"));
    CHECK(text.back() == '\n');
}

TEST_CASE("a carriage return is written so that every XML reader gets it back") {
    const auto text = xmlPropertyList({{"K", {std::string("a\rb")}}});

    CHECK_FALSE(contains(text, "\r")); // readers turn a plain one into a line feed
    CHECK((roundTrip({{"K", {std::string("a\rb")}}}) == Dictionary{{"K", {std::string("a\rb")}}}));
}

TEST_CASE("characters that XML does not allow cannot be written, in keys and values") {
    for (int code = 0; code < 0x20; ++code) {
        if (code == 9 || code == 10 || code == 13) continue;
        const std::string text{'a', static_cast<char>(code)};
        CAPTURE(code);
        expectThrow<EncodingError>([&] { (void)xmlPropertyList({{"K", {text}}}); });
        expectThrow<EncodingError>([&] { (void)xmlPropertyList({{text, {true}}}); });
    }
    for (const std::string text :
         {"\xff", "\xed\xa0\x80", "\xef\xbf\xbe", "\xef\xbf\xbf", "\xe2"}) {
        CAPTURE(text.size());
        expectThrow<EncodingError>([&] { (void)xmlPropertyList({{"K", {text}}}); });
        expectThrow<EncodingError>([&] {
            (void)xmlPropertyList({{"K", {PropertyListArray{{Dictionary{{text, {true}}}}}}}});
        });
    }
    const auto error = expectThrow<EncodingError>([] {
        (void)xmlPropertyList({{"K\n", {std::string("\x01")}}});
    });
    CHECK(isOneLine(error.description()));
}

TEST_CASE("an XML property list in UTF-16 with a byte order mark is read in either order") {
    const std::u16string text = u"<?xml version=\"1.0\" encoding=\"UTF-16\"?>\n<plist "
                                u"version=\"1.0\"><dict><key>K</key><string>\u00e9 \u20ac "
                                u"\U0001F600</string></dict></plist>";
    for (const bool isBigEndian : {true, false}) {
        CAPTURE(isBigEndian);
        const auto bytes = utf16Bytes(u'\uFEFF' + text, isBigEndian);

        const auto value = valueOf(bytes);

        REQUIRE(value.has_value());
        CHECK(*value->string() == "\u00e9 \u20ac \U0001F600");
        CHECK_FALSE(parsePropertyList(bytes + "x").has_value());
        CHECK_FALSE(parsePropertyList(bytes.substr(0, bytes.size() - 1)).has_value());
    }
}

TEST_CASE("a property list in UTF-16 with half a surrogate pair or a NUL is refused") {
    const std::u16string start = u"\uFEFF<plist><dict><key>K</key><string>";
    const std::u16string end = u"</string></dict></plist>";
    REQUIRE(valueOf(utf16Bytes(start + u"x" + end, true)).has_value());
    const std::vector<std::u16string> texts{{char16_t{0xD83D}},
                                            {char16_t{0xDE00}},
                                            {char16_t{0xD83D}, char16_t{0xD83D}},
                                            {char16_t{0xDE00}, char16_t{0xD83D}},
                                            {char16_t{0}}};
    for (const auto& text : texts) {
        CHECK_FALSE(parsePropertyList(utf16Bytes(start + text + end, true)).has_value());
        CHECK_FALSE(parsePropertyList(utf16Bytes(start + text + end, false)).has_value());
    }
    CHECK_FALSE(parsePropertyList(utf16Bytes(start + std::u16string{char16_t{0xD83D}}, true)));
    CHECK_FALSE(parsePropertyList("\xFE\xFF").has_value());
    CHECK_FALSE(parsePropertyList("\xFF\xFE").has_value());
}

TEST_CASE("a value without a type cannot be written") {
    expectThrow<EncodingError>([] { (void)xmlPropertyList({{"K", {}}}); });
}
