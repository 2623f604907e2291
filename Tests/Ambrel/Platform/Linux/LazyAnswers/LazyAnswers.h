#pragma once

namespace korvane::test {

/// What each of the two libraries answers, opened when first asked.
int answerOfFirst();
/// Closes it until it is asked again.
void closeFirst();
int answerOfSecond();

} // namespace korvane::test
