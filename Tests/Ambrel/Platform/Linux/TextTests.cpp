#include "Ambrel/Platform/Text.h"

#include "Ambrel/Base/Utf8.h"

#include <doctest/doctest.h>
#include <string>
#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <vector>

using namespace ambrel;

namespace {

class DefaultLocale {
public:
    explicit DefaultLocale(const char* name) { set(icu::Locale(name)); }
    DefaultLocale(const DefaultLocale&) = delete;
    DefaultLocale& operator=(const DefaultLocale&) = delete;
    ~DefaultLocale() { set(before_); }

private:
    static void set(const icu::Locale& locale) {
        UErrorCode status = U_ZERO_ERROR;
        icu::Locale::setDefault(locale, status);
    }
    icu::Locale before_ = icu::Locale::getDefault();
};

bool hasCategory(char32_t character, std::uint32_t mask) {
    return (U_GET_GC_MASK(static_cast<UChar32>(character)) & mask) != 0;
}

template <class Check> void forEveryCharacter(const Check& check) {
    for (char32_t character = 0; character <= 0x10FFFF; ++character) {
        if (character >= 0xD800 && character <= 0xDFFF) continue;
        std::string text;
        utf8::append(text, character);
        if (!check(character, text)) {
            CAPTURE(static_cast<unsigned>(character));
            CHECK(check(character, text));
        }
    }
}

} // namespace

TEST_CASE("blanks at both ends are tabs and space separators and no line breaks") {
    forEveryCharacter([](char32_t character, const std::string& text) {
        const bool blank = character == 9 || hasCategory(character, U_GC_ZS_MASK);
        return (text::trimmingWhitespace(text + "x" + text) == "x") == blank;
    });
    CHECK(text::trimmingWhitespace(" \t a b \xc2\xa0") == "a b");
    CHECK(text::trimmingWhitespace("\n a \n") == "\n a \n");
    CHECK(text::trimmingWhitespace(" \t ").empty());
    CHECK(text::trimmingWhitespace("").empty());
}

TEST_CASE("white space with line breaks is every separator, tab, U+000A to U+000D and U+0085") {
    forEveryCharacter([](char32_t character, const std::string& text) {
        const bool space = (character >= 9 && character <= 0xD) || character == 0x85 ||
                           hasCategory(character, U_GC_Z_MASK);
        return (text::trimmingWhitespaceAndNewlines(text + "x" + text) == "x") == space;
    });
    CHECK(text::trimmingWhitespaceAndNewlines(" \r\n a\nb \xe2\x80\xa9\x0b") == "a\nb");
    CHECK(text::trimmingWhitespaceAndNewlines(" \n ").empty());
}

TEST_CASE("letters, marks and numbers of any script are alphanumeric and nothing else is") {
    forEveryCharacter([](char32_t character, const std::string&) {
        return text::isAlphanumeric(character) ==
               hasCategory(character, U_GC_L_MASK | U_GC_M_MASK | U_GC_N_MASK);
    });
    CHECK_FALSE(text::isAlphanumeric(0xD800));
    CHECK_FALSE(text::isAlphanumeric(0x110000));
}

TEST_CASE("a character takes the columns that East Asian width gives it") {
    struct Row {
        std::string text;
        std::size_t columns;
    };
    const std::vector<Row> table{
        {"", 0},
        {"abc", 3},
        {"\u00E9", 1},
        {"e\u0301", 1},
        {"\u4E2D\u6587", 4},
        {"\uFF21", 2}, // a full-width letter
        {"\uFF71", 1}, // a half-width one
        {"\U0001F600", 2},
        {"\u200B\u200D", 0},
        {"\u00AD", 1},
        {"\u1112\u1161\u11AB", 2}, // one Korean syllable in three parts
        {"\xff", 1},
    };
    for (const auto& row : table) {
        CAPTURE(row.text);
        CHECK(text::columnsOf(row.text) == row.columns);
    }
}

TEST_CASE("upper and lower case are the full mapping of the root locale") {
    for (const auto* locale : {"en_US", "tr_TR", "az", "lt_LT", "de_DE", "el_GR"}) {
        const DefaultLocale scope(locale);
        CAPTURE(locale);
        CHECK(text::lowercased("TITLE I") == "title i");
        CHECK(text::uppercased("title i") == "TITLE I");
        CHECK(text::lowercased("\xc4\xb0") == "i\xcc\x87"); // dotted capital I
        CHECK(text::uppercased("stra\xc3\x9f"
                               "e") == "STRASSE"); // sharp s
        CHECK(text::lowercased("\xce\x9f\xce\x94\xce\x9f\xce\xa3") ==
              "\xce\xbf\xce\xb4\xce\xbf\xcf\x82");         // final sigma
        CHECK(text::uppercased("\xce\xac") == "\xce\x86"); // accent stays
        CHECK(text::lowercased("\xc3\x87"
                               "A") == "\xc3\xa7"
                                       "a");
    }
}

TEST_CASE("names are ordered without regard to case but with regard to accents") {
    for (const auto* locale : {"en_US", "de_DE", "root"}) {
        const DefaultLocale scope(locale);
        CAPTURE(locale);
        const text::NameOrder order;
        CHECK(order.precedes("alpha", "Beta"));
        CHECK_FALSE(order.precedes("Beta", "alpha"));
        CHECK_FALSE(order.precedes("Mail", "MAIL"));
        CHECK_FALSE(order.precedes("MAIL", "Mail"));
        CHECK(order.precedes("Eclair", "\xc3\x89"
                                       "clair"));
        CHECK_FALSE(order.precedes("\xc3\x89"
                                   "clair",
                                   "Eclair"));
        CHECK_FALSE(order.precedes("\xc3\x89"
                                   "clair",
                                   "\xc3\xa9"
                                   "clair"));
        CHECK(order.precedes("\xc3\x89"
                             "clair",
                             "Zeta"));
        CHECK(order.precedes("", "a"));
        CHECK_FALSE(order.precedes("", ""));
    }
}

TEST_CASE("the order of names is that of the user's locale") {
    {
        const DefaultLocale scope("sv_SE");
        CHECK(text::NameOrder().precedes("Zebra", "\xc3\x96l")); // O with dots comes after Z
    }
    const DefaultLocale scope("de_DE");
    CHECK(text::NameOrder().precedes("\xc3\x96l", "Zebra"));
}
