#include "korvane-runner/Web/NavigationRule.h"

#include "korvane-runner/Web/PermissionQuestion.h"

#include "Support/Expect.h"

using namespace korvane::runner;
using namespace korvane::test;

TEST_CASE("web pages stay in the window, and other programs get an address after a click alone") {
    using To = Destination;
    struct Row {
        std::string url;
        Destination byItself;
        Destination byClick;
    };
    const std::vector<Row> table{
        {"https://example.org/", To::view, To::view},
        {"HTTP://example.org/", To::view, To::view},
        {"about:blank", To::view, To::view},
        {"data:text/html,x", To::view, To::view},
        {"blob:https://example.org/1", To::view, To::view},
        {"file:///x", To::view, To::view},
        {"javascript:alert(1)", To::view, To::view}, // of no other program, ever
        {"JavaScript:alert(1)", To::view, To::view},
        {"", To::view, To::view},
        {"no address", To::view, To::view},
        {"//example.org", To::view, To::view},
        {"mailto:a@example.org", To::nowhere, To::otherProgram},
        {"MAILTO:a@example.org", To::nowhere, To::otherProgram},
        {"tel:+4912", To::nowhere, To::otherProgram},
        {"sms:+4912", To::nowhere, To::otherProgram},
        {"mailto-x:a", To::nowhere, To::otherProgramIfWanted},
        {"ssh://host", To::nowhere, To::otherProgramIfWanted},
        {"x-a.b+1:", To::nowhere, To::otherProgramIfWanted},
        {"mailto:" + std::string(70'000, 'x'), To::nowhere, To::nowhere},
    };
    for (const auto& row : table) {
        const auto& url = row.url;
        const auto& byItself = row.byItself;
        const auto& byClick = row.byClick;
        CAPTURE(url.substr(0, 40));
        CHECK(destinationOf({url, false}) == byItself);
        CHECK(destinationOf({url, true}) == byClick);
    }
}

TEST_CASE("a scheme is told by its letters") {
    CHECK(schemeOf("HttpS://x") == "https");
    CHECK(schemeOf("a:") == "a");
    for (const char* none : {"", ":", "1a:x", "-a:x", "a b:x", "a", "é:x", "a/b:c"}) {
        CAPTURE(none);
        CHECK(schemeOf(none).empty());
    }
}

TEST_CASE("questions name who asks and what for, and stay short and in one piece") {
    CHECK(permissionQuestion(Permission::cameraAndMicrophone, "https://a.example") ==
          Question{"Allow https://a.example to use your camera and microphone?", "Allow"});
    CHECK(permissionQuestion(Permission::microphone, "").text ==
          "Allow this page to use your microphone?");
    CHECK(permissionQuestion(Permission::location, "https://a.example").text ==
          "Allow https://a.example to know where you are?");
    CHECK(otherProgramQuestion("game://start/1\n2") ==
          Question{"Open this “game” address with another program?\ngame://start/1 2", "Open"});
    CHECK(otherProgramQuestion("game:" + std::string(60'000, 'x')).text.size() < 300);
}
