#include "Ambrel/Base/Utf8.h"

#include "Support/Expect.h"

#include <string>
#include <vector>

using namespace ambrel;

TEST_CASE("only well-formed UTF-8 is valid") {
    const std::vector<std::string> valid{
        "",
        "plain",
        std::string("\0", 1),
        "\x7f",
        "\xc2\x80",
        "\xdf\xbf",
        "\xe0\xa0\x80",
        "\xed\x9f\xbf",
        "\xee\x80\x80",
        "\xef\xbf\xbf",
        "\xf0\x90\x80\x80",
        "\xf4\x8f\xbf\xbf",
    };
    for (const auto& text : valid) {
        CAPTURE(text);
        CHECK(utf8::isValid(text));
    }
    const std::vector<std::string> invalid{
        "\x80",
        "\xbf",
        "a\xff",
        "\xc0\x80",
        "\xc1\xbf",
        "\xe0\x80\x80",
        "\xe0\x9f\xbf",
        "\xf0\x80\x80\x80",
        "\xf0\x8f\xbf\xbf",
        "\xed\xa0\x80",
        "\xed\xbf\xbf",
        "\xf4\x90\x80\x80",
        "\xf5\x80\x80\x80",
        "\xe2\x82",
        "\xe2",
        "\xc3(",
        "\xe2\x28\xa1",
        "\xf0\x9f\x98",
        "\xf8\x88\x80\x80\x80",
    };
    for (const auto& text : invalid) {
        CAPTURE(text.size());
        CHECK_FALSE(utf8::isValid(text));
    }
}

TEST_CASE("every ill-formed sequence becomes U+FFFD and the rest stays") {
    CHECK(utf8::replacingInvalid("a\xff"
                                 "b") == "a\xef\xbf\xbd"
                                         "b");
    CHECK(utf8::replacingInvalid("caf\xc3\xa9") == "caf\xc3\xa9");
    CHECK(utf8::replacingInvalid("") == "");
    for (int first = 0; first < 256; ++first) {
        for (int second = 0; second < 256; ++second) {
            const std::string text{'x', static_cast<char>(first), static_cast<char>(second), 'y'};
            const auto replaced = utf8::replacingInvalid(text);
            REQUIRE(utf8::isValid(replaced));
            REQUIRE(replaced.front() == 'x');
            REQUIRE(replaced.back() == 'y');
            if (utf8::isValid(text)) REQUIRE(replaced == text);
        }
    }
}

TEST_CASE("every character survives being appended and taken off again") {
    for (char32_t character = 0; character <= 0x10FFFF; ++character) {
        if (character >= 0xD800 && character <= 0xDFFF) continue;
        std::string text;
        utf8::append(text, character);
        std::string_view rest = text;
        const auto taken = utf8::takeFirst(rest);
        if (!utf8::isValid(text) || taken != character || !rest.empty()) {
            FAIL("not restored: " << static_cast<unsigned>(character));
        }
    }
}

TEST_CASE("taking off an ill-formed byte removes one byte and yields nothing") {
    std::string_view text = "\xe2\x28z";
    CHECK_FALSE(utf8::takeFirst(text).has_value());
    CHECK(text == "(z");
    CHECK(utf8::takeFirst(text) == U'(');
    CHECK(utf8::takeFirst(text) == U'z');
    CHECK(text.empty());
}

TEST_CASE("a text for one line escapes line breaks, controls and bidirectional formatting") {
    CHECK(utf8::oneLine("a\nb") == "a\\nb");
    CHECK(utf8::oneLine("a\tb") == "a\\tb");
    CHECK(utf8::oneLine("\x1b[31m") == "\\u{1B}[31m");
    CHECK(utf8::oneLine("x\xe2\x80\xa8y") == "x\\u{2028}y");
    CHECK(utf8::oneLine("x\xe2\x80\xaey") == "x\\u{202E}y");
    CHECK(utf8::oneLine("caf\xc3\xa9 \xf0\x9f\x98\x80") == "caf\xc3\xa9 \xf0\x9f\x98\x80");
    CHECK(utf8::oneLine("a\xff") == "a\xef\xbf\xbd");
}

TEST_CASE("a text for one line never holds a character that breaks or reorders lines") {
    for (char32_t character = 0; character < 0x3000; ++character) {
        if (character >= 0xD800 && character <= 0xDFFF) continue;
        std::string text;
        utf8::append(text, character);
        const auto line = utf8::oneLine(text);
        const bool control = character < 0x20 || (character >= 0x7F && character < 0xA0);
        const bool lineBreak = character == 0x2028 || character == 0x2029;
        const bool bidirectional = character == 0x061C || character == 0x200E ||
                                   character == 0x200F ||
                                   (character >= 0x202A && character <= 0x202E) ||
                                   (character >= 0x2066 && character <= 0x2069);
        CAPTURE(static_cast<unsigned>(character));
        if (control || lineBreak || bidirectional) {
            CHECK(line.find(text) == std::string::npos);
            CHECK(line.front() == '\\');
        }
    }
}

TEST_CASE("control characters are those of ASCII, DEL and the 32 from U+0080 on") {
    for (const char32_t control : U"\x0A\x1F\x7F\x80\x85\x9F") { // with the NUL at its end
        CHECK(utf8::isControl(control));
    }
    for (const char32_t other : {U'\x20', U'\x7E', U'\xA0', U'\x2028', U'\U0010FFFF'}) {
        CHECK_FALSE(utf8::isControl(other));
    }
}
