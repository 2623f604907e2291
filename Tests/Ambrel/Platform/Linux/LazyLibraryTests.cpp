#include "LazyAnswers/LazyAnswers.h"

#include <doctest/doctest.h>

using namespace korvane::test;

TEST_CASE("two libraries that are opened when first used may have a function of one name") {
    CHECK(answerOfFirst() == 1);
    CHECK(answerOfSecond() == 2);
    CHECK(answerOfFirst() == 1);
}
