#include "Ambrel/Base/TextParts.h"

#include "Support/Expect.h"

#include <map>
#include <vector>

namespace ambrel::test {

TEST_CASE("a text is taken apart at each end of a part, and a last one is not needed") {
    struct Row {
        std::string_view text;
        std::vector<std::string_view> parts;
    };
    const std::vector<Row> rows{
        {"", {}},
        {"a", {"a"}},
        {"a;", {"a"}},
        {";", {""}},
        {";a", {"", "a"}},
        {"a;b", {"a", "b"}},
        {"a;;b", {"a", "", "b"}},
        {"a;b;", {"a", "b"}},
    };
    for (const auto& row : rows) {
        CAPTURE(row.text);
        std::vector<std::string_view> parts;
        for (auto rest = row.text; !rest.empty();) parts.push_back(takeUntil(rest, ';'));
        CHECK(parts == row.parts);
    }
}

TEST_CASE("a key that is missing has an empty text") {
    const std::map<std::string, std::string> map{{"A", "1"}, {"B", ""}};
    CHECK(valueOf(map, "A") == "1");
    CHECK(valueOf(map, "B").empty());
    CHECK(valueOf(map, "C").empty());
}

} // namespace ambrel::test
