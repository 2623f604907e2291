#include "korvane-runner/Desktop/DroppedQuestion.h"

#include <doctest/doctest.h>

namespace korvane::test {

using runner::DroppedQuestion;
using Cure = DroppedQuestion::Cure;

namespace {

/// A load of the window's whose question has come before its start.
DroppedQuestion inDoubt() {
    DroppedQuestion question;
    question.loadWanted();
    question.questionAsked();
    question.loadStarted();
    return question;
}

} // namespace

TEST_CASE("a load that is cancelled is repeated when its question came before its start") {
    auto question = inDoubt();

    CHECK(question.loadCancelled() == Cure::repeat);
    CHECK(question.loadCancelled() == Cure::none); // it is asked for, and has not started yet

    question.loadStarted();
    CHECK(question.loadCancelled() == Cure::none); // the person is asked this time, and says no
}

TEST_CASE("a load that is cancelled for another reason is not repeated") {
    DroppedQuestion question;
    CHECK(question.loadCancelled() == Cure::none);

    question.loadWanted();
    question.loadStarted();
    question.questionAsked();
    CHECK(question.loadCancelled() == Cure::none);

    // A picture of the page that one sees asks, and then a link is followed.
    question.loadSettled();
    question.questionAsked();
    question.loadStarted();
    CHECK(question.loadCancelled() == Cure::none);
}

TEST_CASE("a load is not repeated when its page is there or the window wants another") {
    auto settled = inDoubt();
    settled.loadSettled();
    CHECK(settled.loadCancelled() == Cure::none);

    auto replaced = inDoubt();
    replaced.loadWanted();
    CHECK(replaced.loadCancelled() == Cure::none);
}

TEST_CASE("a load that is cancelled again and again is given up, and the next begins anew") {
    auto question = inDoubt();
    const auto cancelAgain = [&question] {
        const auto cure = question.loadCancelled();
        question.questionAsked();
        question.loadStarted();
        return cure;
    };
    for (int i = 0; i < DroppedQuestion::mostRepeats; ++i) CHECK(cancelAgain() == Cure::repeat);
    CHECK(cancelAgain() == Cure::giveUp);
    CHECK(question.loadCancelled() == Cure::none);

    question.loadWanted();
    question.questionAsked();
    question.loadStarted();
    CHECK(question.loadCancelled() == Cure::repeat);
}

} // namespace korvane::test
