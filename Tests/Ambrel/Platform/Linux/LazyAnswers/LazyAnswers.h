#pragma once

namespace korvane::test {

/// What each of the two libraries answers, opened when first asked.
int answerOfFirst();
int answerOfSecond();

} // namespace korvane::test
