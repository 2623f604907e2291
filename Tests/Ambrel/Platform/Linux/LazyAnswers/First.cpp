#include "LazyAnswers.h"

// Before the library's own header, whose function it renames.
#include "LazyAnswerFirst.h"

#include "Answer.h"

namespace korvane::test {

int answerOfFirst() {
    ambrel::loadAnswerFirst();
    return lazyAnswer();
}

void closeFirst() { ambrel::unloadAnswerFirst(); }

} // namespace korvane::test
