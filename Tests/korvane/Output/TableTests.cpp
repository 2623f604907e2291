#include "korvane/Output/Table.h"

#include "Support/Expect.h"
#include "korvane/Output/Wrapping.h"

#include <sstream>

namespace korvane::test {

namespace {

std::string written(const Table& table, std::optional<std::size_t> width = std::nullopt) {
    std::ostringstream out;
    table.write(out, width);
    return out.str();
}

} // namespace

TEST_CASE("columns are aligned by what a terminal shows of them") {
    Table table;
    table.add({"ab", "|"});
    table.add({"\u4E2D\u6587", "|"}); // two ideographs, two columns each
    table.add({"e\u0301", "|"});      // an accent that stands on its letter
    table.add({"\U0001F600", "|"});   // an emoji

    CHECK(written(table) == "ab    |\n\u4E2D\u6587  |\ne\u0301     |\n\U0001F600    |\n");
}

TEST_CASE("on a terminal the widest paths are shortened in their middle, and nothing else") {
    Table table;
    table.add({"NAME", "BUNDLE", "OPENS"});
    table.add({"A name that is rather long", "/home/somebody/Applications/Work.app", "/bin/true"});

    const auto whole = written(table);
    const auto narrow = written(table, 60);

    CHECK(contains(whole, "/home/somebody/Applications/Work.app  /bin/true\n"));
    CHECK(narrow == "NAME                        BUNDLE                 OPENS\n"
                    "A name that is rather long  /home/…tions/Work.app  /bin/true\n");
    CHECK(written(table, 200) == whole);
    CHECK(contains(written(table, 10), "A name that is rather long  "));
}

TEST_CASE("a text is shortened between whole characters") {
    CHECK(shortened("abcdefghij", 10) == "abcdefghij");
    CHECK(shortened("abcdefghij", 7) == "ab…ghij");
    CHECK(shortened("\u4E2D\u4E2D\u4E2D\u4E2D", 5) == "…\u4E2D");
    CHECK(shortened("abcde\u0301fghi\u0301", 5) == "a…ghi\u0301");
}

TEST_CASE("a text is wrapped between its words, each line of its own") {
    CHECK(wrapped("one two three", 2, std::nullopt) == "one two three");
    CHECK(wrapped("the first of the lines\nsecond", 2, 24) == "the first of the lines\n  second");
    CHECK(wrapped("the first of the lines is long", 2, 24) == "the first of the lines\n  is long");
    CHECK(wrapped("a-word-that-is-longer-than-all-lines x", 0, 20) ==
          "a-word-that-is-longer-than-all-lines\nx");
    CHECK(wrapped("", 0, 20) == "");
}

} // namespace korvane::test
