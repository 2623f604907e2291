#include "Ambrel/Web/WebBadge.h"

#include "Ambrel/Base/Utf8.h"
#include "Support/Expect.h"

#include <charconv>
#include <memory>
#include <random>
#include <unicode/regex.h>
#include <vector>

using namespace ambrel;

namespace {

/// The two patterns as the regular-expression engine of ICU reads them.
class ReferenceCounter {
public:
    ReferenceCounter()
        : round_(compile("\\(\\s*(\\d+)\\+?\\s*\\)")),
          square_(compile("\\[\\s*(\\d+)\\+?\\s*\\]")) {}

    std::int64_t count(const std::string& title) {
        const auto text = icu::UnicodeString::fromUTF8(title);
        for (auto* pattern : {round_.get(), square_.get()}) {
            if (const auto number = firstNumber(*pattern, text)) return *number;
        }
        return 0;
    }

private:
    static std::unique_ptr<icu::RegexMatcher> compile(const char* pattern) {
        UErrorCode status = U_ZERO_ERROR;
        auto matcher =
            std::make_unique<icu::RegexMatcher>(icu::UnicodeString::fromUTF8(pattern), 0U, status);
        REQUIRE(U_SUCCESS(status));
        return matcher;
    }

    static std::optional<std::int64_t> firstNumber(icu::RegexMatcher& pattern,
                                                   const icu::UnicodeString& text) {
        pattern.reset(text);
        UErrorCode status = U_ZERO_ERROR;
        if (!pattern.find(status)) return std::nullopt;
        std::string digits;
        pattern.group(1, status).toUTF8String(digits);
        std::int64_t number = 0;
        const auto* end = digits.data() + digits.size();
        const auto result = std::from_chars(digits.data(), end, number);
        if (result.ec != std::errc{} || result.ptr != end) return std::nullopt;
        return number;
    }

    std::unique_ptr<icu::RegexMatcher> round_;
    std::unique_ptr<icu::RegexMatcher> square_;
};

} // namespace

TEST_CASE("a fresh badge state shows no label") {
    const WebBadgeState state;

    CHECK_FALSE(state.apiBadge.has_value());
    CHECK(state.titleBadge == 0);
    CHECK_FALSE(state.label().has_value());
}

TEST_CASE("a title that counts 0 gives the title count 0 and no label") {
    WebBadgeState state;
    state.titleBadge = 9;

    state.setTitle("(0) Inbox");

    CHECK(state.titleBadge == 0);
    CHECK_FALSE(state.label().has_value());
}

TEST_CASE("setting the API badge to -3 makes it 0 and hides a title count of 5") {
    WebBadgeState state;
    state.setTitle("(5) Mail");

    state.setAPIBadge(-3);

    CHECK(state.apiBadge == 0);
    CHECK(state.titleBadge == 5);
    CHECK_FALSE(state.label().has_value());
}

TEST_CASE("after an API badge of 0 a title that counts 4 shows no label") {
    WebBadgeState state;

    state.setAPIBadge(0);
    state.setTitle("(4) Mail");

    CHECK(state.titleBadge == 4);
    CHECK_FALSE(state.label().has_value());
}

TEST_CASE("a title that counts 12 without an API badge shows the label 12") {
    WebBadgeState state;

    state.setTitle("(12) Mail");

    CHECK(state.label() == "12");
}

TEST_CASE("an API badge of 250 shows the label 250") {
    WebBadgeState state;

    state.setAPIBadge(250);

    CHECK(state.label() == "250");
}

TEST_CASE("digits too long for the integer in round brackets leave it to the square brackets") {
    CHECK(WebBadgeState::unreadCount("(99999999999999999999) [2]") == 2);
    CHECK(WebBadgeState::unreadCount("(9223372036854775808) [2]") == 2);
    CHECK(WebBadgeState::unreadCount("(9223372036854775807) [2]") == 9223372036854775807);
    CHECK(WebBadgeState::unreadCount("(" + std::string(100000, '9') + ") [2]") == 2);
    CHECK(WebBadgeState::unreadCount("(" + std::string(100000, '0') + "7) [2]") == 7);
}

TEST_CASE("the count stands in the first brackets that hold only a number") {
    struct Row {
        std::string title;
        std::int64_t count;
    };
    const std::vector<Row> table{
        {"(3) Inbox", 3},
        {"Inbox [12]", 12},
        {"( 99+ ) Chat", 99},
        {"(2) [5]", 2},
        {"[5] (2)", 2},
        {"no brackets", 0},
        {"", 0},
        {"(x) [4]", 4},
        {"(x) (6)", 6},
        {"((7))", 7},
        {"(3] [4)", 0},
        {"(3++)", 0},
        {"(+3)", 0},
        {"(-3)", 0},
        {"(3 4)", 0},
        {"(3 +)", 0},
        {"(3+ ) x", 3},
        {"()", 0},
        {"( )", 0},
        {"(3", 0},
        {"(3) (4)", 3},
        {"(\n3\t)", 3},
        {"(\xd9\xa3) [4]", 4},      // an Arabic digit matches and then does not parse
        {"(\xd9\xa3) (5)", 0},      // and is the first match of its pattern
        {"(1\xef\xbc\x92) [4]", 4}, // a full-width digit
        {"(\xc2\xa0"
         "8\xe3\x80\x80)",
         8},
        {"\xff(3)\xff", 3},
        {"(\xff"
         "3) [1]",
         1},
    };
    for (const auto& row : table) {
        CAPTURE(row.title);
        CHECK(WebBadgeState::unreadCount(row.title) == row.count);
    }
}

TEST_CASE("the last title counts and the label has no cap") {
    WebBadgeState state;
    state.setTitle("(5) Mail");
    state.setTitle("Mail");
    CHECK_FALSE(state.label().has_value());

    state.setTitle("(9223372036854775807)");

    CHECK(state.label() == "9223372036854775807");
}

TEST_CASE("a cleared API badge stays set and a new count shows again") {
    WebBadgeState state;
    state.setAPIBadge(7);
    CHECK(state.label() == "7");
    state.setAPIBadge(0);
    CHECK(state.apiBadge == 0);
    CHECK_FALSE(state.label().has_value());
    state.setAPIBadge(std::numeric_limits<std::int64_t>::min());
    CHECK(state.apiBadge == 0);
    state.setAPIBadge(1);
    CHECK(state.label() == "1");
}

TEST_CASE("badge states are compared field by field") {
    WebBadgeState left;
    WebBadgeState right;
    CHECK(left == right);
    left.setAPIBadge(0);
    CHECK_FALSE(left == right);
    right.setAPIBadge(0);
    right.setTitle("(1)");
    CHECK_FALSE(left == right);
}

TEST_CASE("every character means in a title what the regular-expression engine of ICU says") {
    ReferenceCounter reference;
    for (char32_t character = 0; character <= 0x10FFFF; ++character) {
        if (character >= 0xD800 && character <= 0xDFFF) continue;
        std::string one;
        utf8::append(one, character);
        for (const auto& title : {"(" + one + "5" + one + ")[7]", "(5" + one + ")[7]"}) {
            if (WebBadgeState::unreadCount(title) != reference.count(title)) {
                CAPTURE(static_cast<unsigned>(character));
                CHECK(WebBadgeState::unreadCount(title) == reference.count(title));
            }
        }
    }
}

TEST_CASE("generated titles count as the regular-expression engine of ICU counts them") {
    const std::vector<std::string> pieces{"(",
                                          "(",
                                          "(",
                                          ")",
                                          ")",
                                          ")",
                                          "[",
                                          "[",
                                          "]",
                                          "]",
                                          "0",
                                          "1",
                                          "7",
                                          "9",
                                          "12",
                                          "+",
                                          "+",
                                          " ",
                                          " ",
                                          "\t",
                                          "\n",
                                          "\r\n",
                                          "\x0b",
                                          "\x1c",
                                          "\x1f",
                                          "x",
                                          "-",
                                          std::string("\0", 1),
                                          "\xc2\x85",
                                          "\xc2\xa0",
                                          "\xe1\xa0\x8e",
                                          "\xe2\x80\x8b",
                                          "\xe2\x80\xa8",
                                          "\xe2\x80\x83",
                                          "\xe3\x80\x80",
                                          "\xef\xbb\xbf",
                                          "\xd9\xa3",
                                          "\xef\xbc\x95",
                                          "\xf0\x9d\x9f\x98",
                                          "\xc2\xb2",
                                          "\xe2\x85\xa7",
                                          "\xf0\x9f\x98\x80",
                                          "9223372036854775808",
                                          "e\xcc\x81"};
    ReferenceCounter reference;
    std::mt19937 random(20240501);
    std::uniform_int_distribution<std::size_t> piece(0, pieces.size() - 1);
    std::uniform_int_distribution<int> length(1, 9);
    int counted = 0;
    for (int round = 0; round < 60000; ++round) {
        std::string title = round % 2 == 0 ? "" : round % 4 == 1 ? "(" : "[";
        for (int count = length(random); count > 0; --count) title += pieces[piece(random)];
        const auto expected = reference.count(title);
        if (expected != 0) ++counted;
        if (WebBadgeState::unreadCount(title) != expected) {
            CAPTURE(title);
            CHECK(WebBadgeState::unreadCount(title) == expected);
        }
    }
    CHECK(counted > 300); // the generator does reach titles that count
}
