#include "Manager/Files/TreeSize.h"

#include "Support/Environment.h"
#include "Support/Expect.h"

namespace korvane::test {

TEST_CASE("the size of a tree counts its items and what its files hold, and follows no link") {
    const TempDir tmp;
    writeFile(tmp / "tree/a", "1234");
    writeFile(tmp / "tree/folder/b", "56");
    writeFile(tmp / "elsewhere/big", std::string(1000, 'x'));
    makeLink(tmp / "tree/link", tmp / "elsewhere");
    makeLink(tmp / "to-tree", tmp / "tree");

    CHECK(sizeOfTree(tmp / "tree") == TreeSize{.items = 5, .bytes = 6});
    CHECK(sizeOfTree(tmp / "tree/") == TreeSize{.items = 5, .bytes = 6});
    CHECK(sizeOfTree(tmp / "tree/a") == TreeSize{.items = 1, .bytes = 4});
    CHECK(sizeOfTree(tmp / "to-tree") == TreeSize{.items = 1, .bytes = 0});
    CHECK(sizeOfTree(tmp / "nothing") == TreeSize{});
}

} // namespace korvane::test
