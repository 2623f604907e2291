#include "Manager/Rules/SiteAddress.h"

#include "Manager/Operations/Scene.h"

namespace korvane::test {

TEST_CASE("a text that is no address is refused with the reason, and one that is is not") {
    const std::pair<std::string, std::string> table[] = {
        {" ", "\" \" is no address of a web site: there is nothing in it."},
        {"a b://c", "\"a b://c\" is no address of a web site: what stands before \"://\" is no "
                    "scheme, such as https."},
        {"https://", "\"https://\" is no address of a web site: it names no host, such as "
                     "mail.example.org."},
        {"my\nmail", "\"my\\nmail\" is no address of a web site: its host holds a blank, a control "
                     "character or a bracket that is not closed."},
        {"mail:box", "\"mail:box\" is no address of a web site: what follows the colon behind its "
                     "host is no number of a port."},
    };
    for (const auto& row : table) {
        const auto refusal = expectThrow<Refusal>([&] { requireSiteAddress(row.first); });
        CHECK(refusal.kind == Refusal::Kind::badAddress);
        CHECK(refusal.subject == row.first);
        CHECK(refusal.sentence() == row.second);
    }
    CHECK_NOTHROW(requireSiteAddress("mail.example.org"));
    CHECK_NOTHROW(requireSiteAddress("data:text/html,x"));
}

TEST_CASE("a web instance without an address to show is told of, by how it is named") {
    const Scene scene;
    auto record = scene.instance();
    CHECK_FALSE(addressObstacle(record, scene.user).has_value());
    record.config.kind = ambrel::ShortcutKind::web;
    record.config.url = "https://example.org/";
    CHECK_FALSE(addressObstacle(record, scene.user).has_value());

    for (const auto& url : {std::optional<std::string>(), std::optional<std::string>("https://")}) {
        record.config.url = url;
        const auto notice = addressObstacle(record, scene.user);
        REQUIRE(notice.has_value());
        CHECK(notice->kind == Notice::Kind::nothingToShow);
        CHECK(notice->subject == "Work");
        CHECK(notice->remedy == Remedy::changeAddress);
    }
}

} // namespace korvane::test
