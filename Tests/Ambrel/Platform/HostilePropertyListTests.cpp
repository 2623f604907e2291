#include "BinaryPlist.h"
#include "Support/Builders.h"
#include "Support/Expect.h"

using namespace ambrel;
using namespace korvane::test;

namespace {

std::optional<PropertyListValue> xmlValue(const std::string& xml) {
    return valueOf(xmlPlist("<key>K</key>" + xml));
}

std::string nestedXml(int depth, const std::string& open, const std::string& close) {
    std::string text = "<key>K</key>";
    for (int level = 0; level < depth; ++level) text += open;
    for (int level = 0; level < depth; ++level) text += close;
    return xmlPlist(text);
}

std::string nestedBinary(int depth, bool dictionaries) {
    BinaryPlist plist;
    const auto key = plist.text("K");
    auto inner = plist.text("x");
    for (int level = 0; level < depth; ++level) {
        inner = dictionaries ? plist.dictionary({{key, inner}}) : plist.array({inner});
    }
    return plist.file(plist.dictionary({{key, inner}}));
}

} // namespace

TEST_CASE("markup that two readers take for different things hides no nesting") {
    const int levels = 2000;
    for (const std::string hidden :
         {"<!DOCTYPE x [</array></array>]>", "<?x \" ?></array></array> \" ?>", "<!--></array>-->",
          "<array a=\"></array></array>\">", "<array a='/>'>"}) {
        CAPTURE(hidden);
        CHECK_FALSE(
            parsePropertyList(nestedXml(levels, "<array>" + hidden, "</array>")).has_value());
    }
}

TEST_CASE("a small binary list that stands for a huge one is refused") {
    BinaryPlist plist;
    const auto text = plist.text(std::string(1'000'000, 'a'));
    const auto few = plist.array({text, text});
    CHECK(parsePropertyList(plist.file(plist.dictionary({{plist.text("K"), few}}))).has_value());

    BinaryPlist hostile;
    const auto shared = hostile.text(std::string(1'000'000, 'a'));
    const auto many = hostile.array(std::vector<decltype(hostile.text("K"))>(200, shared));
    const auto file = hostile.file(hostile.dictionary({{hostile.text("K"), many}}));
    CHECK_FALSE(parsePropertyList(file).has_value());
}

TEST_CASE("nesting up to 500 levels is read and 600 or 100000 levels are refused") {
    CHECK(parsePropertyList(nestedXml(500, "<array>", "</array>")).has_value());
    CHECK(parsePropertyList(nestedBinary(500, false)).has_value());
    CHECK(parsePropertyList(nestedBinary(500, true)).has_value());
    for (const int depth : {600, 100000}) {
        CAPTURE(depth);
        CHECK_FALSE(parsePropertyList(nestedXml(depth, "<array>", "</array>")).has_value());
        CHECK_FALSE(
            parsePropertyList(nestedXml(depth, "<dict><key>K</key>", "</dict>")).has_value());
        CHECK_FALSE(parsePropertyList(nestedBinary(depth, false)).has_value());
        CHECK_FALSE(parsePropertyList(nestedBinary(depth, true)).has_value());
    }
}

TEST_CASE("deep nesting is refused however the elements are spelled") {
    constexpr int deep = 100000;
    for (const auto& tags : std::vector<std::pair<std::string, std::string>>{
             {"<array >", "</array >"},
             {"<array\n>", "</array>"},
             {"<array a=\"/>\">", "</array>"},
             {"<array a='>'>", "</array>"},
             {"<array>", ""},
             {"<!-- --><array><!-- </array> -->", "</array>"},
             {"<array><![CDATA[</array>]]>", "</array>"},
             {"<array><?x </array>?>", "</array>"},
             {"<plist><array>", "</array></plist>"},
             {"<other>", "</other>"},
             {"<string>", "</string>"},
         }) {
        const auto& [open, close] = tags;
        CAPTURE(tags.first);
        CHECK_FALSE(parsePropertyList(nestedXml(deep, open, close)).has_value());
        CHECK_FALSE(parsePropertyList("\xef\xbb\xbf" + nestedXml(deep, open, close)).has_value());
    }
}

TEST_CASE("what looks like nesting inside text, comments or side by side is not refused") {
    std::string tags;
    for (int index = 0; index < 2000; ++index) tags += "<array>";
    std::string siblings;
    for (int index = 0; index < 2000; ++index) siblings += "<array/><array></array>";

    const auto commented = xmlValue("<!-- " + tags + " --><string>v</string>");
    REQUIRE(commented.has_value());
    CHECK(*commented->string() == "v");
    const auto escaped = xmlValue("<string>" + xmlEscaped(tags) + "</string>");
    REQUIRE(escaped.has_value());
    CHECK(*escaped->string() == tags);
    CHECK(xmlValue("<array>" + siblings + "</array>").has_value());
}

TEST_CASE("a binary list that contains itself is refused") {
    BinaryPlist arrays;
    const auto key = arrays.text("K");
    const auto loop = arrays.array({0});
    arrays.replace(loop, BinaryPlist::arrayBytes({loop}));
    CHECK_FALSE(parsePropertyList(arrays.file(arrays.dictionary({{key, loop}}))).has_value());

    BinaryPlist dictionaries;
    const auto name = dictionaries.text("K");
    const auto root = dictionaries.dictionary({{name, 0}});
    dictionaries.replace(root, BinaryPlist::dictionaryBytes({{name, root}}));
    CHECK_FALSE(parsePropertyList(dictionaries.file(root)).has_value());

    BinaryPlist ring;
    const auto label = ring.text("K");
    const auto first = ring.array({0});
    const auto second = ring.array({first});
    ring.replace(first, BinaryPlist::arrayBytes({second}));
    CHECK_FALSE(parsePropertyList(ring.file(ring.dictionary({{label, first}}))).has_value());
}

TEST_CASE("a binary list that would unfold to an astronomical size is refused") {
    BinaryPlist plist;
    const auto key = plist.text("K");
    auto inner = plist.text("x");
    for (int level = 0; level < 60; ++level) inner = plist.array({inner, inner});
    CHECK_FALSE(parsePropertyList(plist.file(plist.dictionary({{key, inner}}))).has_value());

    BinaryPlist keyed;
    const auto left = keyed.text("L");
    const auto right = keyed.text("R");
    auto node = keyed.text("x");
    for (int level = 0; level < 60; ++level) node = keyed.dictionary({{left, node}, {right, node}});
    CHECK_FALSE(parsePropertyList(keyed.file(node)).has_value());
}

TEST_CASE("entities that unfold to an astronomical size are refused") {
    std::string text = "<?xml version=\"1.0\"?><!DOCTYPE plist [<!ENTITY e0 \"xxxxxxxxxx\">";
    for (int level = 1; level < 12; ++level) {
        std::string references;
        for (int copy = 0; copy < 10; ++copy) references += "&e" + std::to_string(level - 1) + ";";
        text += "<!ENTITY e" + std::to_string(level) + " \"" + references + "\">";
    }
    text += "]><plist version=\"1.0\"><dict><key>K</key><string>&e11;</string></dict></plist>";

    const auto dictionary = parsePropertyList(text);

    if (dictionary) CHECK(dictionary->at("K").string()->size() < 1000);
}

TEST_CASE("text that is not UTF-8 makes the list unreadable") {
    for (const std::string bytes : {"\xff", "\xc0\x80", "\xed\xa0\x80", "\xe2\x82", "caf\xe9"}) {
        CAPTURE(bytes.size());
        CHECK_FALSE(xmlValue("<string>" + bytes + "</string>").has_value());
        CHECK_FALSE(parsePropertyList(xmlPlist("<key>" + bytes + "</key><true/>")).has_value());
        CHECK_FALSE(
            parsePropertyList(xmlPlist("<!-- " + bytes + " --><key>K</key><true/>")).has_value());
        CHECK_FALSE(
            valueOf(binaryWith("K", BinaryPlist::marker(0x50, bytes.size()) + bytes)).has_value());
    }
}

TEST_CASE("a NUL byte inside a text or key never ends the program and is never cut off silently") {
    const std::string nul = std::string("a\0b", 3);
    const auto utf16 = "\x63" + std::string("\0a\0\0\0b", 6);
    const std::vector<std::string> lists{
        xmlPlist("<key>K</key><string>" + nul + "</string>"),
        xmlPlist("<key>" + nul + "</key><string>x</string><key>K</key><string>x</string>"),
        xmlPlist("<key>K</key><string>a&#0;b</string>"),
        binaryWith("K", "\x53" + nul),
        binaryWith("K", utf16),
        binaryWith(nul, "\x09"),
    };
    for (std::size_t index = 0; index < lists.size(); ++index) {
        CAPTURE(index);
        const auto dictionary = parsePropertyList(lists[index]);
        CHECK_FALSE((dictionary && dictionary->count("a") == 1));
        if (dictionary && dictionary->count("K") == 1 && dictionary->at("K").string() != nullptr) {
            CHECK(*dictionary->at("K").string() != "a");
        }
    }
}

TEST_CASE("an XML property list cut off before its end is unreadable") {
    const auto text = xmlPlist("<key>CFBundleIdentifier</key><string>org.example</string>"
                               "<key>A</key><array><true/><integer>1</integer></array>");
    const auto end = text.find("</dict>");
    for (std::size_t length = 0; length <= end; ++length) {
        CAPTURE(length);
        CHECK_FALSE(parsePropertyList(text.substr(0, length)).has_value());
    }
}

TEST_CASE("a binary property list cut off anywhere is unreadable") {
    const auto bytes = nestedBinary(3, true);
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        CAPTURE(length);
        CHECK_FALSE(parsePropertyList(bytes.substr(0, length)).has_value());
    }
}

TEST_CASE("a property list with any one byte changed is read or refused, never a crash") {
    const auto xml = xmlPlist("<key>a</key><string>x&amp;y</string><key>i</key><integer>-1"
                              "</integer><key>r</key><real>1.5</real><key>d</key><date>"
                              "2020-01-01T00:00:00Z</date><key>b</key><data>AAEC</data>");
    BinaryPlist plist;
    const auto key = plist.text("K");
    const auto inner =
        plist.dictionary({{key, plist.array({key, plist.add("\x13" + bigEndian(5, 8)),
                                             plist.add("\x09"), plist.add("\x23" + bigEndian(1, 8)),
                                             plist.add("\x33" + bigEndian(0, 8)),
                                             plist.add("\x62" + std::string("\x00\xe9\xd8\x00", 4)),
                                             plist.add("\x42xy")})}});
    const auto binary = plist.file(inner);
    int readable = 0;
    for (const auto& original : {xml, binary}) {
        for (std::size_t index = 0; index < original.size(); ++index) {
            for (const char byte : {'\0', '\x01', '\x0f', '<', '>', '&', '\x7f', '\x80', '\xff'}) {
                auto changed = original;
                changed[index] = byte;
                if (parsePropertyList(changed)) ++readable;
            }
        }
    }
    CHECK(readable > 0);
}

TEST_CASE("counts, offsets and references beyond the file are refused") {
    const auto good = binaryWith("K", "\x09");
    REQUIRE(parsePropertyList(good).has_value());
    const auto trailer = good.size() - 32;
    for (const std::size_t field : {trailer + 6, trailer + 7}) { // widths
        for (const char width : {'\0', '\x10', '\x7f', '\xff'}) {
            auto changed = good;
            changed[field] = width;
            CAPTURE(field - trailer);
            CHECK_FALSE(parsePropertyList(changed).has_value());
        }
    }
    for (const std::size_t field : {trailer + 8, trailer + 16, trailer + 24}) {
        for (const std::uint64_t value :
             {std::uint64_t{0x7FFFFFFFFFFFFFFF}, std::uint64_t{0x2000000000000000},
              std::uint64_t{0xFFFFFFFFFFFFFFFF}, std::uint64_t{100000}}) {
            auto changed = good;
            changed.replace(field, 8, bigEndian(value, 8));
            CAPTURE(field - trailer);
            CAPTURE(value);
            CHECK_FALSE(parsePropertyList(changed).has_value());
        }
    }
    CHECK_FALSE(valueOf(binaryWith("K", "\xaf\x13" + bigEndian(0x4000000000000000ULL, 8))));
    CHECK_FALSE(valueOf(binaryWith("K", "\xdf\x13" + bigEndian(0x4000000000000000ULL, 8))));
    CHECK_FALSE(valueOf(binaryWith("K", "\x5f\x13" + bigEndian(0x7FFFFFFFFFFFFFFFULL, 8))));
    CHECK_FALSE(valueOf(binaryWith("K", "\xa1" + bigEndian(4000000, 4))));
}
