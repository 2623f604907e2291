#include "LazyAnswers/LazyAnswers.h"

#include "Support/Expect.h"
#include "Support/Files.h"

using namespace korvane::test;

TEST_CASE("two libraries that are opened when first used may have a function of one name") {
    CHECK(answerOfFirst() == 1);
    CHECK(answerOfSecond() == 2);
    CHECK(answerOfFirst() == 1);
}

TEST_CASE("a library that is closed is in memory no more, and is opened again when it is used") {
    const auto isMapped = [] {
        return contains(readFile("/proc/self/maps"), "libkorvane-test-answer-First.so");
    };
    CHECK(answerOfFirst() == 1);
    CHECK(isMapped());

    closeFirst();
    CHECK_FALSE(isMapped());
    closeFirst();

    CHECK(answerOfFirst() == 1);
    CHECK(isMapped());
}
