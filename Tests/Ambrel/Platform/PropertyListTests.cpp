#include "Ambrel/Platform/PropertyList.h"

#include "Ambrel/Base/CodingError.h"
#include "Ambrel/Platform/LibraryError.h"
#include "Support/Builders.h"
#include "Support/Expect.h"
#include "Support/TempDir.h"

#include <limits>
#include <unistd.h>

using namespace ambrel;
using namespace korvane::test;

namespace {

using Dictionary = PropertyListDictionary;

std::string bigEndian(std::uint64_t number, int bytes) {
    std::string text;
    for (int shift = (bytes - 1) * 8; shift >= 0; shift -= 8) {
        text += static_cast<char>(static_cast<unsigned char>(number >> shift));
    }
    return text;
}

/// Writes binary property lists object by object, ill-formed ones too.
class BinaryPlist {
public:
    using Ref = std::uint64_t;

    Ref add(const std::string& bytes) {
        objects_.push_back(bytes);
        return objects_.size() - 1;
    }
    Ref text(const std::string& ascii) { return add(marker(0x50, ascii.size()) + ascii); }
    Ref array(const std::vector<Ref>& elements) { return add(arrayBytes(elements)); }
    Ref dictionary(const std::vector<std::pair<Ref, Ref>>& entries) {
        return add(dictionaryBytes(entries));
    }
    void replace(Ref object, const std::string& bytes) { objects_[object] = bytes; }

    static std::string arrayBytes(const std::vector<Ref>& elements) {
        auto bytes = marker(0xA0, elements.size());
        for (const auto element : elements) bytes += bigEndian(element, 4);
        return bytes;
    }
    static std::string dictionaryBytes(const std::vector<std::pair<Ref, Ref>>& entries) {
        auto bytes = marker(0xD0, entries.size());
        for (const auto& entry : entries) bytes += bigEndian(entry.first, 4);
        for (const auto& entry : entries) bytes += bigEndian(entry.second, 4);
        return bytes;
    }
    static std::string marker(unsigned kind, std::size_t count) {
        if (count < 15) return {static_cast<char>(static_cast<unsigned char>(kind | count))};
        return static_cast<char>(static_cast<unsigned char>(kind | 0xF)) + std::string("\x12") +
               bigEndian(count, 4);
    }

    std::string file(Ref top) const {
        std::string bytes = "bplist00";
        std::string offsets;
        for (const auto& object : objects_) {
            offsets += bigEndian(bytes.size(), 4);
            bytes += object;
        }
        const auto table = bytes.size();
        return bytes + offsets + std::string(6, '\0') + "\x04\x04" + bigEndian(objects_.size(), 8) +
               bigEndian(top, 8) + bigEndian(table, 8);
    }

private:
    std::vector<std::string> objects_;
};

std::string binaryWith(const std::string& key, const std::string& valueBytes) {
    BinaryPlist plist;
    const auto name = plist.text(key);
    return plist.file(plist.dictionary({{name, plist.add(valueBytes)}}));
}

std::optional<PropertyListValue> valueOf(const std::string& bytes) {
    const auto dictionary = parsePropertyList(bytes);
    if (!dictionary || dictionary->count("K") == 0) return std::nullopt;
    return dictionary->at("K");
}
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
