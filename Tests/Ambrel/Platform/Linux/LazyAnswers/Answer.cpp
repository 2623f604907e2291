#include "Answer.h"

__attribute__((visibility("default"))) int lazyAnswer() { return KORVANE_TEST_ANSWER; }
