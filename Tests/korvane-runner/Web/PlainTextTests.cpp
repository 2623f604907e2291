#include "korvane-runner/Web/PlainText.h"

#include "Support/Expect.h"

using namespace korvane::runner;

TEST_CASE(
    "a text of several lines keeps its line breaks, each the same, and no control character") {
    CHECK(plainText::lines("a\nb\r\nc\rd\u2028e\u0085f") == "a\nb\nc\nd\ne\nf");
    CHECK(plainText::lines(std::string("a\0b\tc\x7f", 6)) == "a b c ");
    CHECK(plainText::lines("\xff\xc3") == "\uFFFD\uFFFD");
    CHECK(plainText::lines("ž😀 <b>&amp;") == "ž😀 <b>&amp;");
    CHECK(plainText::oneLine("a\r\n\nb") == "a  b");
}

TEST_CASE("a text is cut between characters") {
    CHECK(plainText::cut("abc", 3) == "abc");
    CHECK(plainText::cut("abc", 2) == "ab");
    CHECK(plainText::cut("aé", 2) == "a");
    CHECK(plainText::cut("😀", 3).empty());
    CHECK(plainText::cut("😀x", 4) == "😀");
}

TEST_CASE("text in HTML is text") {
    CHECK(plainText::html("<a href=\"x\" b='y'>&") ==
          "&lt;a href=&quot;x&quot; b=&#39;y&#39;&gt;&amp;");
}
