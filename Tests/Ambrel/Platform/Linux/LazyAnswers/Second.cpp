#include "LazyAnswers.h"

// Before the library's own header, whose function it renames.
#include "LazyAnswerSecond.h"

#include "Answer.h"

namespace korvane::test {

int answerOfSecond() {
    ambrel::loadAnswerSecond();
    return lazyAnswer();
}

} // namespace korvane::test
