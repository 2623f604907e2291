#include "Manager/Base/NearestWord.h"

#include "Support/Expect.h"

namespace korvane::test {

TEST_CASE("the nearest word is one that differs by a slip") {
    const Strings verbs{"create", "list", "show", "open", "delete"};

    CHECK(nearest("crate", verbs) == "create");
    CHECK(nearest("lsit", verbs) == "list");
    CHECK(nearest("DELETE", verbs).empty());
    CHECK(nearest("xyzzy", verbs).empty());
    CHECK(nearest("", verbs).empty());
    CHECK(nearest(std::string(100000, 'a'), verbs).empty());
}

} // namespace korvane::test
