#include "korvane-runner/Web/FailurePage.h"

#include "Support/Expect.h"

using namespace korvane::runner;
using namespace korvane::test;

using Kind = LoadFailure::Kind;

TEST_CASE("a failure's page tells what happened, where and why, and how to try again") {
    const std::string link = "<a href=\"https://a.example/?x=1&amp;y=2\">Try again</a>";
    for (const auto& [kind, title] : std::vector<std::pair<Kind, std::string>>{
             {Kind::notReached, "This page cannot be reached"},
             {Kind::notTrusted, "This connection is not safe"},
             {Kind::crashed, "This page has stopped working"},
         }) {
        const auto html = failurePage({kind, "https://a.example/?x=1&y=2", "No route to host"});
        CAPTURE(html);
        CHECK(contains(html, "<title>" + title + "</title>"));
        CHECK(contains(html, "<h1>" + title + "</h1>"));
        CHECK(contains(html, ">https://a.example/?x=1&amp;y=2</p>"));
        CHECK(contains(html, ">No route to host</p>"));
        CHECK(contains(html, link));
        CHECK(contains(html, "prefers-color-scheme: dark"));
    }
}

TEST_CASE("what a failure's page quotes is text, of one line and not too long") {
    const std::string bad = "\"'><script>alert(1)</script>\n";
    const auto html = failurePage({Kind::notReached, "https://a.example/" + bad, bad});
    CHECK_FALSE(contains(html, "<script"));
    CHECK_FALSE(contains(html, "\"'>"));
    CHECK(contains(html,
                   "https://a.example/&quot;&#39;&gt;&lt;script&gt;alert(1)&lt;/script&gt; </p>"));

    const auto without = failurePage({Kind::crashed, "", ""}).size();
    const std::string huge(1'000'000, 'x');
    CHECK(failurePage({Kind::crashed, huge, huge}).size() < without + 1000);
}

TEST_CASE("a failure's page leads back to pages alone") {
    for (const char* url : {"", "javascript:alert(1)", "mailto:a@example.org", "game://x"}) {
        CAPTURE(url);
        CHECK_FALSE(contains(failurePage({Kind::notReached, url, ""}), "<a "));
    }
}
